// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/timeline_edit.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string_view>
#include <type_traits>
#include <unordered_set>

namespace vistels {

namespace {

// Adds texts to a list, each once. A few are looked for in the list itself; only a long list pays for a set.
template <class Text>
class once_adder {
  public:
    // At most `most` texts are going to be added.
    once_adder(std::vector<Text>& list, std::size_t most) : list_(list), many_(list.size() + most > few) {
        if (!many_) return;
        // The views in the set stay good as long as the texts in the list are not moved.
        if constexpr (std::is_same_v<Text, std::string>) {
            list.reserve(list.size() + most);
            known_.reserve(list.size() + most);
        }
        for (const auto& text : list) known_.insert(view(text));
    }
    void add(const Text& text) {
        if (!list_.empty() && list_.back() == text) return;
        if (!many_ && std::find(list_.begin(), list_.end(), text) != list_.end()) return;
        list_.push_back(text);
        if (many_ && !known_.insert(view(list_.back())).second) list_.pop_back();
    }

  private:
    static constexpr std::size_t few = 16;
    static std::string_view view(const std::string& text) { return text; }
    static std::string_view view(const shared_text& text) { return text.str(); }

    std::vector<Text>& list_;
    const bool many_;
    std::unordered_set<std::string_view> known_;
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
    edit_applier(sxy_DATA_root& timeline, change_set& touched, std::size_t operations)
        : timeline_(timeline),
          touched_(touched),
          rows_(touched.rows, 2 * operations),
          clips_(touched.clips, operations) {
        inverse_.reserve(operations);
    }

    bool apply(const operation::any& one) {
        return std::visit([this](const auto& concrete) { return run(concrete); }, one);
    }

    // What takes back all that was applied, the last first. Nothing is applied after this.
    std::vector<operation::any> take_inverse() {
        std::reverse(inverse_.begin(), inverse_.end());
        return std::move(inverse_);
    }

  private:
    bool done(bool succeeded, operation::any back) {
        if (succeeded) inverse_.push_back(std::move(back));
        return succeeded;
    }

    void touch_row(const shared_text& row) {
        touched_.kinds |= change_set::rows_changed;
        rows_.add(row);
    }
    void touch_clip(const std::string& clip, const shared_text& row, unsigned kinds) {
        touched_.kinds |= kinds;
        clips_.add(clip);
        rows_.add(row);
    }
    static unsigned kinds_of(const clip_place& place) {
        return place.is_live ? change_set::live_changed : change_set::clips_changed;
    }

    bool run(const operation::insert_row& one) {
        touch_row(one.row->uuid());
        return done(timeline_.insert_row(one.index, *one.row), operation::remove_row{one.row->uuid()});
    }

    bool run(const operation::remove_row& one) {
        const auto index = timeline_.row_index(one.row);
        if (!index) return false;
        touch_row(one.row);
        row_pointer row = timeline_.rows()[*index];
        return done(timeline_.remove_row(one.row), operation::insert_row{*index, std::move(row)});
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
        auto clip = one.clip->id();
        touch_clip(clip, one.row, change_set::clips_changed);
        return done(timeline_.insert_clip(one.row, one.clip), operation::remove_clip{std::move(clip)});
    }

    bool run(const operation::remove_clip& one) {
        auto place = timeline_.remove_clip(one.clip);
        if (!place) return false;
        touch_clip(one.clip, place->row, kinds_of(*place));
        if (place->is_live) {
            inverse_.emplace_back(operation::begin_clip{std::move(place->row), std::move(place->clip)});
        } else {
            inverse_.emplace_back(operation::insert_clip{std::move(place->row), std::move(place->clip)});
        }
        return true;
    }

    bool run(const operation::change_clip& one) {
        const auto place = timeline_.find_clip(one.clip);
        if (!place) return false;
        touch_clip(one.clip, place->row,
                   place->is_live ? change_set::live_changed : change_set::clips_changed);
        auto [changed, back] = change_clip_values(*place->clip, one.set, one.unset);
        return done(timeline_.replace_clip(std::move(changed)),
                    operation::change_clip{one.clip, std::move(back.set), std::move(back.unset)});
    }

    bool run(const operation::move_clip& one) {
        auto from = timeline_.move_clip(one.clip, one.row);
        if (!from) return false;
        touch_clip(one.clip, *from, change_set::clips_changed);
        rows_.add(one.row);
        inverse_.emplace_back(operation::move_clip{one.clip, std::move(*from)});
        return true;
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
        auto clip = one.clip->id();
        touch_clip(clip, one.row, change_set::live_changed);
        return done(timeline_.insert_live_clip(one.row, one.clip), operation::remove_clip{std::move(clip)});
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

    bool run(const operation::add_tombstones& one) {
        const auto row = timeline_.row(one.row);
        if (!row) return false;
        touch_row(one.row);
        auto all = row->deleted_clips();
        all.insert(all.end(), one.tombstones.begin(), one.tombstones.end());
        operation::remove_tombstones back{one.row, {}};
        for (auto last = one.tombstones.rbegin(); last != one.tombstones.rend(); ++last) {
            back.clips.push_back(last->deleted_clip_ID);
        }
        return done(timeline_.set_tombstones(one.row, std::move(all)), std::move(back));
    }

    bool run(const operation::remove_tombstones& one) {
        const auto row = timeline_.row(one.row);
        if (!row) return false;
        touch_row(one.row);
        auto all = row->deleted_clips();
        operation::add_tombstones back{one.row, {}};
        for (const auto& clip : one.clips) {
            const auto last = std::find_if(all.rbegin(), all.rend(), [&](const auto& tombstone) {
                return tombstone.deleted_clip_ID == clip;
            });
            if (last == all.rend()) continue;
            back.tombstones.push_back(std::move(*last));
            all.erase(std::next(last).base());
        }
        std::reverse(back.tombstones.begin(), back.tombstones.end());
        return done(timeline_.set_tombstones(one.row, std::move(all)), std::move(back));
    }

    sxy_DATA_root& timeline_;
    change_set& touched_;
    once_adder<shared_text> rows_;
    once_adder<std::string> clips_;
    std::vector<operation::any> inverse_;
};

// Room for the clips that an edit brings, once.
void expect_clips_of(const timeline_edit& edit, sxy_DATA_root& timeline) {
    const auto added = std::count_if(edit.operations.begin(), edit.operations.end(), [](const auto& one) {
        return std::holds_alternative<operation::insert_clip>(one);
    });
    timeline.expect_clips(static_cast<std::size_t>(added));
}

}  // namespace

result<timeline_edit> apply_edit(sxy_DATA_root& timeline, const timeline_edit& edit, change_set& touched) {
    const auto growing_before = timeline.live_clips();
    edit_applier applier(timeline, touched, edit.operations.size());
    expect_clips_of(edit, timeline);
    for (const auto& one : edit.operations) {
        if (applier.apply(one)) continue;
        change_set undone;
        const auto inverse = applier.take_inverse();
        edit_applier back(timeline, undone, inverse.size());
        for (const auto& earlier : inverse) back.apply(earlier);
        timeline.set_live_clips(growing_before);  // taking back a finish does not make its clip grow again
        return failure{"\"" + edit.name + "\" could not be done: what it changes is no longer there."};
    }
    return timeline_edit{edit.name, edit.scope, applier.take_inverse()};
}

timeline_edit plan_delete_clips(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                                const std::string& author, double now) {
    timeline_edit edit;
    std::map<std::size_t, operation::add_tombstones> tombstones;  // by the row's place
    for (const auto& uuid : clips) {
        const auto place = timeline.find_clip(uuid);
        if (!place || place->is_live) continue;
        edit.operations.emplace_back(operation::remove_clip{uuid});
        auto& of_row = tombstones[*timeline.row_index(place->row)];
        of_row.row = place->row;
        of_row.tombstones.push_back({uuid, author, now});
    }
    edit.name = edit.operations.size() == 1 ? "Delete Clip" : "Delete Clips";
    for (auto& [index, added] : tombstones) edit.operations.emplace_back(std::move(added));
    return edit;
}

}  // namespace vistels
