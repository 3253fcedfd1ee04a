// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/row_compaction.h"

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <utility>

#include "timeline/edits/edit_failures.h"
#include "timeline/edits/edit_names.h"
#include "timeline/edits/tombstones.h"
#include "util/uuid.h"

namespace vistels {

namespace {

constexpr const char* categories_key = "uncompacted_row_categories";
constexpr const char* colours_key = "uncompacted_row_colors";
constexpr const char* uuids_key = "uncompacted_row_Permanent_uuids";
constexpr const char* sort_numbers_key = "uncompacted_sort_number";
constexpr const char* compactor_numbers_key = "uncompacted_sort_number_Compactor_Expander";
constexpr const char* rows_key = "uncompacted_rows";
constexpr const char* array_keys[] = {categories_key, colours_key, uuids_key, sort_numbers_key,
                                      compactor_numbers_key};
// Of a row.
constexpr const char* sort_number_key = "sort_number";
constexpr const char* compactor_number_key = "sort_number_(for_row_Compactor_or_Expander)";
constexpr const char* clips_key = "clips";  // in "uncompacted_rows": UUIDs

// A merged row as its master row keeps it.
struct merged_row {
    property_dictionary values;      // stored values of the row
    std::vector<std::string> clips;  // those that do not say that they were made on it
    std::int64_t number = std::numeric_limits<std::int64_t>::max();  // its place, from 1
    std::int64_t order = std::numeric_limits<std::int64_t>::max();   // the compactor's sort number, from 1
};

property_value text_of(const property_dictionary& stored, const char* key) {
    return stored.text_or_empty(key);
}

property_value integer_of(const property_dictionary& stored, const char* key) {
    return stored.integer(key).value_or(0);
}

// The values of the master row that hold the merged rows. The compactor's sort numbers are the rows' places.
void add_arrays(property_dictionary& master, const std::vector<property_dictionary>& rows) {
    std::map<std::string, property_array> arrays;
    property_array whole;
    for (const auto& row : rows) {
        arrays[categories_key].push_back(text_of(row, "row_category"));
        arrays[colours_key].push_back(text_of(row, "color"));
        arrays[uuids_key].push_back(text_of(row, "uuid_row"));
        arrays[sort_numbers_key].push_back(integer_of(row, sort_number_key));
        arrays[compactor_numbers_key].push_back(integer_of(row, "row_number"));
        whole.emplace_back(row);
    }
    for (const char* key : array_keys) master.set(key, std::move(arrays[key]));
    master.set(rows_key, std::move(whole));
}

property_dictionary values_to_keep(const sxy_ROW& row, std::size_t number) {
    property_dictionary values = write_row_values(row, number);
    property_array clips;
    for (const auto& clip : row.clips()) {
        if (clip->row_uuid_in_clip() != row.uuid()) clips.emplace_back(clip->id());
    }
    if (!clips.empty()) values.add(clips_key, std::move(clips));
    return values;
}

// The master row: the topmost row's look, what all agree on, and the tombstones of all.
sxy_ROW master_of(const std::vector<row_pointer>& rows, const std::string& name) {
    sxy_ROW master = *rows.front();
    master.clips().assign({});
    if (!name.empty()) master.set_name(name);
    std::vector<sxy_Deleted_Clip_Item_k11> tombstones;
    for (const auto& row : rows) {
        if (row->category() != master.category()) master.set_category({});
        if (!row->is_timer_row()) master.set_is_timer_row(false);
        const auto deleted = row->deleted_clips();
        tombstones.insert(tombstones.end(), deleted.begin(), deleted.end());
    }
    master.set_deleted_clips(std::move(tombstones));
    return master;
}

const property_value* element(const property_dictionary& stored, const char* key, std::size_t index) {
    const auto* array = stored.array(key);
    return array && index < array->size() ? &(*array)[index] : nullptr;
}

// The values that the five arrays hold of one row.
property_dictionary values_in_arrays(const property_dictionary& master, std::size_t index) {
    property_dictionary values;
    values.add("row_name", master.text_or_empty("row_name"));
    values.add("height", master.number("height").value_or(sxy_ROW::default_height));
    const auto copy = [&](const char* from, const char* to) {
        if (const auto* value = element(master, from, index)) values.add(to, *value);
    };
    copy(sort_numbers_key, sort_number_key);
    copy(compactor_numbers_key, compactor_number_key);
    copy(categories_key, "row_category");
    copy(uuids_key, "uuid_row");
    copy(colours_key, "color");
    return values;
}

// The whole values of a row by its UUID, or null.
const property_dictionary* whole_values(const property_dictionary& master, const std::string& uuid) {
    const auto* rows = master.array(rows_key);
    if (!rows || uuid.empty()) return nullptr;
    for (const auto& row : *rows) {
        const auto* values = row.dictionary();
        if (values && values->text_or_empty("uuid_row") == uuid) return values;
    }
    return nullptr;
}

std::vector<merged_row> merged_rows_of(const property_dictionary& master) {
    std::size_t count = std::numeric_limits<std::size_t>::max();
    for (const char* key : array_keys) {
        const auto* array = master.array(key);
        count = std::min(count, array ? array->size() : 0);
    }
    std::vector<merged_row> rows;
    std::set<std::string> uuids;
    for (std::size_t index = 0; index < count; ++index) {
        merged_row row{values_in_arrays(master, index), {}};
        if (const auto* order = element(master, compactor_numbers_key, index);
            order && order->integer().value_or(0) > 0)
            row.order = *order->integer();
        const std::string uuid = row.values.text_or_empty("uuid_row");
        if (const auto* whole = whole_values(master, uuid)) {
            row.values = *whole;
            row.number = whole->integer("row_number").value_or(row.number);
            if (const auto* clips = whole->array(clips_key)) {
                for (const auto& clip : *clips) {
                    if (clip.text()) row.clips.push_back(*clip.text());
                }
            }
        }
        if (uuid.empty() || !uuids.insert(uuid).second) row.values.set("uuid_row", new_uuid());
        rows.push_back(std::move(row));
    }
    return rows;
}

// Finds the row that a clip of the master row belongs to.
class row_finder {
  public:
    explicit row_finder(const std::vector<merged_row>& rows) {
        for (const auto& row : rows) {
            const shared_text uuid(row.values.text_or_empty("uuid_row"));
            if (first_.empty()) first_ = uuid;
            by_uuid_.insert(uuid.str());
            for (const auto& clip : row.clips) by_clip_.emplace(clip, uuid);
            // A category that two rows have tells nothing.
            const auto [place, is_new] = by_category_.emplace(row.values.text_or_empty("row_category"), uuid);
            if (!is_new) place->second = shared_text();
        }
    }

    shared_text row_of(const sxy_CLIP& clip) const {
        if (const auto found = by_clip_.find(clip.id()); found != by_clip_.end()) return found->second;
        const auto made_on = clip.row_uuid_in_clip();
        if (by_uuid_.contains(made_on.str())) return made_on;
        const auto found = by_category_.find(clip.row_category_in_clip().str());
        return found != by_category_.end() && !found->second.empty() ? found->second : first_;
    }

  private:
    shared_text first_;
    std::set<std::string> by_uuid_;
    std::map<std::string, shared_text> by_clip_;
    std::map<std::string, shared_text> by_category_;
};

bool grows_in(const sxy_DATA_root& timeline, const shared_text& row) {
    const auto& live = timeline.live_clips();
    return std::any_of(live.begin(), live.end(), [&](const auto& place) { return place.row == row; });
}

// The master's tombstones that no merged row has: of clips deleted since.
std::vector<sxy_Deleted_Clip_Item_k11> later_tombstones(const sxy_ROW& master,
                                                        const std::vector<sxy_ROW>& rows) {
    auto later = master.deleted_clips();
    for (const auto& row : rows) {
        const auto earlier = row.deleted_clips();
        std::erase_if(later, [&](const auto& one) {
            return std::find(earlier.begin(), earlier.end(), one) != earlier.end();
        });
    }
    return later;
}

}  // namespace

result<timeline_edit> plan_compact_rows(const sxy_DATA_root& timeline, const std::vector<shared_text>& rows,
                                        const std::string& name) {
    std::set<std::size_t> places;
    for (const auto& uuid : rows) {
        const auto index = timeline.row_index(uuid);
        if (!index) return row_to_merge_is_gone();
        if (grows_in(timeline, uuid)) return row_has_a_growing_clip();
        places.insert(*index);
    }
    if (places.size() < 2) return too_few_rows_to_merge();
    std::vector<row_pointer> merged;
    std::vector<property_dictionary> kept;
    for (const std::size_t index : places) {
        merged.push_back(timeline.rows()[index]);
        kept.push_back(values_to_keep(*merged.back(), index + 1));
    }
    property_dictionary arrays;
    add_arrays(arrays, kept);
    sxy_ROW master = row_with(master_of(merged, name), arrays, {});
    master.set_uuid(shared_text(new_uuid()));
    master.set_compactor_sort_number(static_cast<int>(*places.begin() + 1));
    const shared_text uuid = master.uuid();
    timeline_edit edit{edit_name::merge_rows, uuid.str(), {}, {}, true};
    edit.operations.emplace_back(operation::insert_row{*places.begin(), std::move(master)});
    for (const auto& row : merged) {
        for (const auto& clip : row->clips()) {
            edit.operations.emplace_back(operation::move_clip{clip->id(), uuid});
        }
        edit.operations.emplace_back(operation::remove_row{row->uuid()});
    }
    return edit;
}

result<timeline_edit> plan_expand_row(const sxy_DATA_root& timeline, const shared_text& master) {
    const auto place = timeline.row_index(master);
    if (!place) return row_is_gone();
    if (grows_in(timeline, master)) return row_has_a_growing_clip();
    const sxy_ROW& row = *timeline.rows()[*place];
    auto merged = merged_rows_of(write_row_values(row, 0));
    if (merged.empty()) return row_was_not_merged();
    std::vector<sxy_ROW> rows;
    for (const auto& one : merged) rows.push_back(read_row_values(one.values, 0));
    auto later = later_tombstones(row, rows);
    if (!later.empty()) {
        auto all = rows.front().deleted_clips();
        all.insert(all.end(), later.begin(), later.end());
        rows.front().set_deleted_clips(std::move(all));
    }
    timeline_edit edit{edit_name::expand_row, master.str(), {}, {}, true};
    // Below all at first: a row must be there before clips can move to it. One that has come back by itself,
    // because something was coded on it, takes its clips as it is.
    std::vector<std::size_t> made;
    for (std::size_t index = 0; index < rows.size(); ++index) {
        if (timeline.row_index(rows[index].uuid())) continue;
        const std::size_t below_all = timeline.rows().size() + made.size();
        made.push_back(index);
        edit.operations.emplace_back(operation::insert_row{below_all, rows[index]});
    }
    const row_finder finder(merged);
    for (const auto& clip : row.clips()) {
        edit.operations.emplace_back(operation::move_clip{clip->id(), finder.row_of(*clip)});
    }
    edit.operations.emplace_back(operation::remove_row{master});
    // Then each to its place, from the top, so that those below do not shift it any more.
    std::stable_sort(made.begin(), made.end(), [&](std::size_t a, std::size_t b) {
        return std::pair(merged[a].number, merged[a].order) < std::pair(merged[b].number, merged[b].order);
    });
    const std::size_t count = timeline.rows().size() - 1 + made.size();
    std::size_t next = *place;
    for (const std::size_t index : made) {
        const auto number = merged[index].number;
        const bool known = number >= 1 && number <= static_cast<std::int64_t>(count);
        const std::size_t to = known ? static_cast<std::size_t>(number - 1) : std::min(next, count - 1);
        edit.operations.emplace_back(operation::move_row{rows[index].uuid(), to});
        next = to + 1;
    }
    return edit;
}

bool is_compacted(const sxy_ROW& row) {
    return !merged_rows_of(write_row_values(row, 0)).empty();
}

}  // namespace vistels
