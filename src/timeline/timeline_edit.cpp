// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/timeline_edit.h"

#include <algorithm>
#include <map>
#include <unordered_set>

namespace vistels {

namespace {

void add_once(std::vector<shared_text>& to, const shared_text& item) {
    if (std::find(to.begin(), to.end(), item) == to.end()) to.push_back(item);
}

struct value_change {
    property_dictionary set;
    property_array unset;
};

// What makes `before` of `after`. Not only the values that were asked for: a start moved behind the end moves
// the end too.
value_change way_back(const property_dictionary& before, const property_dictionary& after) {
    value_change back;
    for (const auto& entry : before) {
        const auto* now = after.find(entry.key);
        if (!now || !(*now == entry.value)) back.set.add(entry.key, entry.value);
    }
    for (const auto& entry : after) {
        if (!before.contains(entry.key)) back.unset.emplace_back(entry.key);
    }
    return back;
}

// Applies operations one by one, remembering for each what takes it back.
class edit_applier {
  public:
    edit_applier(sxy_DATA_root& timeline, change_set& touched)
        : timeline_(timeline), touched_(touched), clips_(touched.clips.begin(), touched.clips.end()) {}

    bool apply(const operation::any& one) {
        return std::visit([this](const auto& concrete) { return run(concrete); }, one);
    }

    // What takes back all that was applied, the last first.
    std::vector<operation::any> inverse() const { return {inverse_.rbegin(), inverse_.rend()}; }

  private:
    bool done(bool succeeded, operation::any back) {
        if (succeeded) inverse_.push_back(std::move(back));
        return succeeded;
    }

    void touch_row(const shared_text& row) {
        touched_.kinds |= change_set::rows_changed;
        add_once(touched_.rows, row);
    }
    void touch_clip(const std::string& clip, const shared_text& row, unsigned kinds) {
        touched_.kinds |= kinds;
        if (clips_.insert(clip).second) touched_.clips.push_back(clip);
        add_once(touched_.rows, row);
    }

    bool run(const operation::insert_row& one) {
        touch_row(one.row.uuid());
        return done(timeline_.insert_row(one.index, one.row), operation::remove_row{one.row.uuid()});
    }

    bool run(const operation::remove_row& one) {
        const auto index = timeline_.row_index(one.row);
        if (!index) return false;
        touch_row(one.row);
        const sxy_ROW row = *timeline_.rows()[*index];
        return done(timeline_.remove_row(one.row), operation::insert_row{*index, row});
    }

    bool run(const operation::move_row& one) {
        const auto from = timeline_.row_index(one.row);
        if (!from) return false;
        touch_row(one.row);
        return done(timeline_.move_row(one.row, one.index), operation::move_row{one.row, *from});
    }

    bool run(const operation::change_row& one) {
        const auto row = timeline_.row(one.row);
        if (!row) return false;
        touch_row(one.row);
        const bool changed = timeline_.change_row(one.row, one.set, one.unset);
        auto back = way_back(write_row_values(*row, 0), write_row_values(*timeline_.row(one.row), 0));
        return done(changed, operation::change_row{one.row, std::move(back.set), std::move(back.unset)});
    }

    bool run(const operation::insert_clip& one) {
        touch_clip(one.clip.id(), one.row, change_set::clips_changed);
        return done(timeline_.insert_clip(one.row, one.clip), operation::remove_clip{one.clip.id()});
    }

    bool run(const operation::remove_clip& one) {
        const auto place = timeline_.find_clip(one.clip);
        if (!place) return false;
        touch_clip(one.clip, place->row,
                   place->is_live ? change_set::live_changed : change_set::clips_changed);
        if (place->is_live) {
            return done(timeline_.remove_clip(one.clip), operation::begin_clip{place->row, *place->clip});
        }
        return done(timeline_.remove_clip(one.clip), operation::insert_clip{place->row, *place->clip});
    }

    bool run(const operation::change_clip& one) {
        const auto place = timeline_.find_clip(one.clip);
        if (!place) return false;
        touch_clip(one.clip, place->row,
                   place->is_live ? change_set::live_changed : change_set::clips_changed);
        sxy_CLIP changed = clip_with(*place->clip, one.set, one.unset);
        auto back = way_back(write_clip_values(*place->clip), write_clip_values(changed));
        return done(timeline_.replace_clip(std::move(changed)),
                    operation::change_clip{one.clip, std::move(back.set), std::move(back.unset)});
    }

    bool run(const operation::move_clip& one) {
        const auto place = timeline_.find_clip(one.clip);
        if (!place || place->is_live) return false;
        touch_clip(one.clip, place->row, change_set::clips_changed);
        add_once(touched_.rows, one.row);
        return done(timeline_.move_clip(one.clip, one.row), operation::move_clip{one.clip, place->row});
    }

    bool run(const operation::insert_qualifier& one) {
        const auto place = timeline_.find_clip(one.clip);
        if (!place || one.qualifier.uuid().empty()) return false;
        qual_ROOT all = *place->clip->qualifiers();
        const auto same = [&](const qual_ITEM& item) { return item.uuid() == one.qualifier.uuid(); };
        if (std::any_of(all.begin(), all.end(), same)) return false;
        const std::size_t index = std::min(one.index, all.size());
        all.insert(all.begin() + static_cast<std::ptrdiff_t>(index), one.qualifier);
        return replace_qualifiers(*place, std::move(all),
                                  operation::remove_qualifier{one.clip, one.qualifier.uuid()});
    }

    bool run(const operation::remove_qualifier& one) {
        const auto place = timeline_.find_clip(one.clip);
        if (!place) return false;
        qual_ROOT all = *place->clip->qualifiers();
        const auto found = std::find_if(all.begin(), all.end(),
                                        [&](const qual_ITEM& item) { return item.uuid() == one.qualifier; });
        if (found == all.end()) return false;
        operation::insert_qualifier back{one.clip, static_cast<std::size_t>(found - all.begin()), *found};
        all.erase(found);
        return replace_qualifiers(*place, std::move(all), std::move(back));
    }

    bool replace_qualifiers(const clip_place& place, qual_ROOT all, operation::any back) {
        sxy_CLIP clip = *place.clip;
        clip.set_qualifiers(std::move(all));
        touch_clip(clip.id(), place.row,
                   change_set::qualifiers_changed | (place.is_live ? change_set::live_changed : 0U));
        return done(timeline_.replace_clip(std::move(clip)), std::move(back));
    }

    bool run(const operation::begin_clip& one) {
        touch_clip(one.clip.id(), one.row, change_set::live_changed);
        return done(timeline_.insert_live_clip(one.row, one.clip), operation::remove_clip{one.clip.id()});
    }

    bool run(const operation::finish_clip& one) {
        const auto place = timeline_.find_clip(one.clip);
        if (!place || !place->is_live || !timeline_.row_index(place->row)) return false;
        sxy_CLIP clip = *place->clip;
        clip.set_secs_start(one.secs_start);
        clip.set_secs_end(one.secs_end);
        touch_clip(one.clip, place->row, change_set::live_changed | change_set::clips_changed);
        timeline_.remove_clip(one.clip);
        return done(timeline_.insert_clip(place->row, std::move(clip)), operation::remove_clip{one.clip});
    }

    sxy_DATA_root& timeline_;
    change_set& touched_;
    std::unordered_set<std::string> clips_;  // those in touched_
    std::vector<operation::any> inverse_;
};

}  // namespace

result<timeline_edit> apply_edit(sxy_DATA_root& timeline, const timeline_edit& edit, change_set& touched) {
    const auto growing_before = timeline.live_clips();
    edit_applier applier(timeline, touched);
    for (const auto& one : edit.operations) {
        if (applier.apply(one)) continue;
        change_set undone;
        edit_applier back(timeline, undone);
        for (const auto& earlier : applier.inverse()) back.apply(earlier);
        timeline.set_live_clips(growing_before);  // taking back a finish does not make its clip grow again
        return failure{"\"" + edit.name + "\" could not be done: what it changes is no longer there."};
    }
    return timeline_edit{edit.name, edit.scope, applier.inverse()};
}

timeline_edit plan_delete_clips(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                                const std::string& author, double now) {
    timeline_edit edit;
    std::map<std::size_t, std::vector<sxy_Deleted_Clip_Item_k11>> tombstones;
    for (const auto& uuid : clips) {
        const auto place = timeline.find_clip(uuid);
        if (!place || place->is_live) continue;
        edit.operations.emplace_back(operation::remove_clip{uuid});
        tombstones[*timeline.row_index(place->row)].push_back({uuid, author, now});
    }
    for (const auto& [index, added] : tombstones) {
        sxy_ROW row = *timeline.rows()[index];
        auto all = row.deleted_clips();
        all.insert(all.end(), added.begin(), added.end());
        row.set_deleted_clips(std::move(all));
        property_dictionary set;
        set.add("deleted clips", *write_row_values(row, 0).find("deleted clips"));
        edit.operations.emplace_back(operation::change_row{row.uuid(), std::move(set), {}});
    }
    edit.name = edit.operations.size() == 2 ? "Delete Clip" : "Delete Clips";
    return edit;
}

}  // namespace vistels
