// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/timeline_change.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <type_traits>
#include <utility>

namespace vistels {

namespace {

using operations = std::vector<operation::any>;

template <class... Kinds>
bool is_one_of(const operation::any& any) {
    return (std::holds_alternative<Kinds>(any) || ...);
}

bool sets_key(const property_dictionary& set, const property_array& unset, const std::string& key) {
    return set.contains(key) || std::find(unset.begin(), unset.end(), property_value(key)) != unset.end();
}

template <class Change>
bool covers_values(const Change& earlier, const Change& later) {
    for (const auto& entry : later.set) {
        if (!sets_key(earlier.set, earlier.unset, entry.key)) return false;
    }
    return std::all_of(later.unset.begin(), later.unset.end(), [&](const property_value& key) {
        return key.text() && sets_key(earlier.set, earlier.unset, *key.text());
    });
}

// True when taking back `earlier` leaves nothing of what taking back `later` would do.
bool covers(const operation::any& earlier, const operation::any& later) {
    return std::visit(
        [&](const auto& first) {
            using kind = std::decay_t<decltype(first)>;
            const auto* second = std::get_if<kind>(&later);
            if (!second) return false;
            if constexpr (std::is_same_v<kind, operation::change_clip>) {
                return first.clip == second->clip && covers_values(first, *second);
            } else if constexpr (std::is_same_v<kind, operation::change_row>) {
                return first.row == second->row && covers_values(first, *second);
            } else if constexpr (std::is_same_v<kind, operation::move_clip>) {
                return first.clip == second->clip;
            } else {
                return false;
            }
        },
        earlier);
}

bool cover(const operations& earlier, const operations& later) {
    return std::all_of(later.begin(), later.end(), [&](const operation::any& one) {
        return std::any_of(earlier.begin(), earlier.end(),
                           [&](const operation::any& first) { return covers(first, one); });
    });
}

// Follows what operations do to which clips and rows exist, to tell which of them can be done.
class feasibility_check {
  public:
    explicit feasibility_check(const sxy_DATA_root& timeline) : timeline_(timeline) {}

    bool can_do(const operation::any& any) {
        return std::visit([this](const auto& one) { return check(one); }, any);
    }

  private:
    bool has_clip(const std::string& clip) const {
        return come_.contains(clip) || (!gone_.contains(clip) && timeline_.find_clip(clip));
    }
    bool has_row(const shared_text& row) const {
        return come_rows_.contains(row.str()) ||
               (!gone_rows_.contains(row.str()) && timeline_.row_index(row).has_value());
    }
    bool is_empty(const shared_text& row) const {
        for (const auto& clip : come_) {
            if (clip.second == row.str()) return false;
        }
        const auto stands_here = [&](const std::string& id) { return !gone_.contains(id); };
        for (const auto& place : timeline_.live_clips()) {
            if (place.row == row && stands_here(place.clip->id())) return false;
        }
        const auto there = timeline_.row(row);
        return !there || std::none_of(there->clips().begin(), there->clips().end(),
                                      [&](const clip_pointer& clip) { return stands_here(clip->id()); });
    }
    std::size_t row_count() const {
        const auto still_there = [&](const row_pointer& row) { return has_row(row->uuid()); };
        const auto& rows = timeline_.rows();
        const auto there = static_cast<std::size_t>(std::count_if(rows.begin(), rows.end(), still_there));
        const auto is_new = [&](const std::string& row) { return !timeline_.row_index(shared_text(row)); };
        return there + static_cast<std::size_t>(std::count_if(come_rows_.begin(), come_rows_.end(), is_new));
    }
    bool has_qualifier(const std::string& clip, const std::string& qualifier) const {
        if (const auto known = qualifiers_.find({clip, qualifier}); known != qualifiers_.end())
            return known->second;
        const auto come = contents_.find(clip);
        const auto place = come == contents_.end() ? timeline_.find_clip(clip) : std::nullopt;
        const sxy_CLIP* content = place                     ? place->clip.get()
                                  : come == contents_.end() ? nullptr
                                                            : come->second;
        return content && std::any_of(content->qualifiers()->begin(), content->qualifiers()->end(),
                                      [&](const qual_ITEM& item) { return item.uuid() == qualifier; });
    }
    bool add(const sxy_CLIP& clip, const shared_text& row) {
        const std::string id = clip.id();
        if (has_clip(id) || !has_row(row)) return false;
        come_.emplace(id, row.str());
        contents_[id] = &clip;
        std::erase_if(qualifiers_, [&](const auto& known) { return known.first.first == id; });
        return true;
    }

    bool check(const operation::insert_row& one) {
        if (has_row(one.row->uuid())) return false;
        come_rows_.insert(one.row->uuid().str());
        return true;
    }
    bool check(const operation::remove_row& one) {
        if (!has_row(one.row) || !is_empty(one.row)) return false;
        come_rows_.erase(one.row.str());
        gone_rows_.insert(one.row.str());
        return true;
    }
    bool check(const operation::move_row& one) { return has_row(one.row) && one.index < row_count(); }
    bool check(const operation::change_row& one) { return has_row(one.row); }
    bool check(const operation::shift_times&) { return true; }
    bool check(const operation::shift_clips& one) {
        return std::any_of(one.clips.begin(), one.clips.end(),
                           [this](const std::string& clip) { return has_clip(clip); });
    }
    bool check(const operation::add_tombstones& one) { return has_row(one.row); }
    bool check(const operation::remove_tombstones& one) { return has_row(one.row); }
    bool check(const operation::insert_clip& one) { return add(*one.clip, one.row); }
    bool check(const operation::begin_clip& one) { return add(*one.clip, one.row); }
    bool check(const operation::remove_clip& one) {
        if (!has_clip(one.clip)) return false;
        come_.erase(one.clip);
        gone_.insert(one.clip);
        return true;
    }
    bool check(const operation::move_clip& one) {
        if (!has_clip(one.clip) || !has_row(one.row)) return false;
        gone_.insert(one.clip);
        come_[one.clip] = one.row.str();
        return true;
    }
    bool check(const operation::change_clip& one) { return has_clip(one.clip); }
    bool check(const operation::insert_qualifier& one) {
        if (!has_clip(one.clip) || has_qualifier(one.clip, one.qualifier.uuid())) return false;
        return qualifiers_[{one.clip, one.qualifier.uuid()}] = true;
    }
    bool check(const operation::remove_qualifier& one) {
        if (!has_clip(one.clip) || !has_qualifier(one.clip, one.qualifier)) return false;
        qualifiers_[{one.clip, one.qualifier}] = false;
        return true;
    }
    bool check(const operation::finish_clip& one) { return has_clip(one.clip); }

    const sxy_DATA_root& timeline_;
    std::map<std::string, std::string> come_;                         // clip -> its row
    std::map<std::string, const sxy_CLIP*> contents_;                 // of clips that come
    std::map<std::pair<std::string, std::string>, bool> qualifiers_;  // clip, qualifier: whether it is there
    std::set<std::string> gone_;
    std::set<std::string> come_rows_;
    std::set<std::string> gone_rows_;
};

// By how much they move all times; nothing where they do more.
std::optional<double> mere_shift(const operations& all) {
    double seconds = 0;
    for (const auto& any : all) {
        const auto* moved = std::get_if<operation::shift_times>(&any);
        if (!moved) return std::nullopt;
        seconds += moved->seconds;
    }
    return seconds;
}

}  // namespace

property_dictionary timeline_change::stored() const {
    return write_edit({"", "", operations_});
}

change_pointer read_recorded_edit(const property_dictionary& stored) {
    auto edit = read_edit(stored);
    return edit ? std::make_shared<const recorded_timeline_edit>(std::move(edit).value()) : nullptr;
}

const timeline_edit& edit_in(const change_pointer& recorded) {
    static const timeline_edit none;
    const auto* own = dynamic_cast<const recorded_timeline_edit*>(recorded.get());
    return own ? own->edit() : none;
}

change_pointer timeline_change_of(operations all) {
    return std::make_shared<const timeline_change>(std::move(all));
}

const operations& operations_in(const document_change& change) {
    static const operations none;
    const auto* own = dynamic_cast<const timeline_change*>(&change);
    return own ? own->operations() : none;
}

document_edit document_edit_of(timeline_edit edit, const std::string& timeline) {
    document_edit made{std::move(edit.name), std::move(edit.scope), {}, edit.is_complete};
    if (!edit.operations.empty()) {
        document_part own;
        own.document.uuid = timeline;
        own.change = timeline_change_of(std::move(edit.operations));
        made.parts.push_back(std::move(own));
    }
    std::move(edit.others.begin(), edit.others.end(), std::back_inserter(made.parts));
    return made;
}

timeline_edit timeline_edit_of(document_edit edit) {
    timeline_edit made{std::move(edit.name), std::move(edit.scope), {}, {}, edit.is_complete};
    for (auto& part : edit.parts) {
        if (part.document.kind != document_kind::timeline) {
            made.others.push_back(std::move(part));
            continue;
        }
        const auto& own = operations_in(*part.change);
        made.operations.insert(made.operations.end(), own.begin(), own.end());
    }
    return made;
}

bool only_sets_values(const operations& all) {
    return std::all_of(all.begin(), all.end(), [](const operation::any& any) {
        return is_one_of<operation::change_clip, operation::change_row, operation::move_clip,
                         operation::shift_times>(any);
    });
}

operations still_possible(const sxy_DATA_root& timeline, const operations& all) {
    feasibility_check feasible(timeline);
    operations possible;
    std::copy_if(all.begin(), all.end(), std::back_inserter(possible),
                 [&](const operation::any& one) { return feasible.can_do(one); });
    return possible;
}

operations joined(const operations& earlier, const operations& later) {
    if (cover(earlier, later)) return earlier;
    const auto first = mere_shift(later);
    const auto then = mere_shift(earlier);
    if (first && then) return {operation::shift_times{*first + *then}};
    operations both = later;
    both.insert(both.end(), earlier.begin(), earlier.end());
    return both;
}

}  // namespace vistels
