// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/timeline_edit.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <unordered_set>

#include "document/document_failures.h"
#include "timeline/edits/edit_failures.h"
#include "timeline/edits/edit_names.h"
#include "timeline/form/unique_appender.h"
#include "timeline/records/shift_times.h"

namespace vistels {

value_change inverse_values(const property_dictionary& before, const property_dictionary& after) {
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

namespace {

// The changes of which a stamp tells.
bool is_stamped(const operation::any& one) {
    return std::holds_alternative<operation::insert_clip>(one) ||
           std::holds_alternative<operation::begin_clip>(one) ||
           std::holds_alternative<operation::finish_clip>(one) ||
           std::holds_alternative<operation::change_clip>(one) ||
           std::holds_alternative<operation::move_clip>(one) ||
           std::holds_alternative<operation::insert_qualifier>(one) ||
           std::holds_alternative<operation::remove_qualifier>(one);
}

bool are_stamped(const std::vector<operation::any>& operations) {
    return std::any_of(operations.begin(), operations.end(), is_stamped);
}

constexpr const char* seconds_key = "edit_seconds";
constexpr const char* author_key = "author";
constexpr const char* older_author_key = "edit clip author";
constexpr const char* collection_key = "coll_id";

bool names_key(const operation::change_clip& change, const char* key) {
    return change.set.contains(key) ||
           std::any_of(change.unset.begin(), change.unset.end(),
                       [&](const property_value& one) { return one.text() && *one.text() == key; });
}

// What makes `info` the last edit of a clip again. Both keys are named also where they stay as they are, so
// that taking an edit back names them for every clip that the edit stamped.
void add_stamp_back(const sxy_clip_EDIT_info_k11& info, bool seconds, bool author, value_change& back) {
    if (seconds && info.edit_seconds) back.set.set(seconds_key, *info.edit_seconds);
    if (seconds && !info.edit_seconds) back.unset.emplace_back(seconds_key);
    if (author && !info.author.empty()) back.set.set(author_key, info.author.str());
    if (author && info.author.empty()) back.unset.emplace_back(author_key);
}

// Applies operations one by one, remembering for each what takes it back.
class edit_applier {
  public:
    edit_applier(sxy_DATA_root& timeline, change_set& touched, const std::vector<operation::any>& operations,
                 const std::optional<edit_stamp>& stamp = {})
        : timeline_(timeline),
          touched_(touched),
          rows_(touched.rows, 2 * operations.size()),
          clips_(touched.clips, operations.size()) {
        inverse_.reserve(operations.size());
        if (!stamp || !are_stamped(operations)) return;
        stamp_.emplace();
        stamp_->edit_seconds = stamp->edit_seconds;
        stamp_->author = shared_text(stamp->author);
        coll_id_ = stamp->coll_id;
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
    // A clip that comes with the edit gets its stamp with it: what the edit changes of it afterwards adds
    // none.
    void note_new(const std::string& clip) {
        if (stamp_) new_clips_.insert(clip);
    }
    bool lacks_collection(const sxy_CLIP& clip) const { return coll_id_ != 0 && clip.coll_id() == 0; }
    void put_stamp_on_new(sxy_CLIP& clip) const {
        auto info = clip.edit_info();
        info.edit_seconds = stamp_->edit_seconds;
        if (!stamp_->author.empty()) info.author = stamp_->author;
        clip.set_edit_info(std::move(info));
        if (lacks_collection(clip)) clip.set_coll_id(coll_id_);
    }
    // The clip as it goes on the timeline. One that says when it was edited keeps that.
    shared_record<sxy_CLIP> with_stamp(const shared_record<sxy_CLIP>& coming) const {
        const bool is_dated = !stamp_ || coming->edit_info().edit_seconds.has_value();
        if (is_dated && (!stamp_ || !lacks_collection(*coming))) return coming;
        sxy_CLIP stamped = *coming;
        if (is_dated) {
            stamped.set_coll_id(coll_id_);
        } else {
            put_stamp_on_new(stamped);
        }
        return stamped;
    }
    bool is_to_be_stamped(const clip_place& place, const std::string& clip) const {
        return stamp_ && !place.is_live && (new_clips_.empty() || !new_clips_.contains(clip));
    }
    // Puts the stamp on `clip`, whose last edit was `before`. False when it is there already.
    bool put_stamp(sxy_CLIP& clip, const sxy_clip_EDIT_info_k11& before, bool seconds, bool author,
                   value_change& back) const {
        const bool is_placed = lacks_collection(clip);
        if (is_placed) {
            clip.set_coll_id(coll_id_);
            back.unset.emplace_back(collection_key);
        }
        auto info = clip.edit_info();
        if (seconds) info.edit_seconds = stamp_->edit_seconds;
        if (author) info.author = stamp_->author;
        if (info == before) return is_placed;
        add_stamp_back(before, seconds, author, back);
        clip.set_edit_info(std::move(info));
        return true;
    }
    // The same for a clip that changes in other ways than by its values; what takes the stamp back, if any.
    std::optional<operation::any> put_stamp(sxy_CLIP& clip, const clip_place& place) const {
        value_change back;
        if (!is_to_be_stamped(place, clip.id())) return std::nullopt;
        if (!put_stamp(clip, clip.edit_info(), true, true, back)) return std::nullopt;
        return operation::change_clip{clip.id(), std::move(back.set), std::move(back.unset)};
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
        auto back = inverse_values(write_row_values(*row, 0), write_row_values(*timeline_.row(one.row), 0));
        return done(changed, operation::change_row{one.row, std::move(back.set), std::move(back.unset)});
    }

    bool run(const operation::insert_clip& one) {
        auto clip = one.clip->id();
        touch_clip(clip, one.row, change_set::clips_changed);
        note_new(clip);
        return done(timeline_.insert_clip(one.row, with_stamp(one.clip)),
                    operation::remove_clip{std::move(clip)});
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
        if (is_to_be_stamped(*place, one.clip)) {
            const bool author = !names_key(one, author_key) && !names_key(one, older_author_key);
            put_stamp(changed, place->clip->edit_info(), !names_key(one, seconds_key), author, back);
        }
        return done(timeline_.replace_clip(std::move(changed)),
                    operation::change_clip{one.clip, std::move(back.set), std::move(back.unset)});
    }

    bool run(const operation::move_clip& one) {
        clip_pointer stamped;
        std::optional<operation::any> stamp_back;
        if (const auto place = stamp_ ? timeline_.find_clip(one.clip) : std::nullopt) {
            auto copy = std::make_shared<sxy_CLIP>(*place->clip);
            stamp_back = put_stamp(*copy, *place);
            if (stamp_back) stamped = std::move(copy);
        }
        auto from = timeline_.move_clip(one.clip, one.row, std::move(stamped));
        if (!from) return false;
        if (stamp_back) inverse_.push_back(std::move(*stamp_back));
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
        auto stamp_back = put_stamp(clip, place);
        touch_clip(clip.id(), place.row,
                   change_set::qualifiers_changed | (place.is_live ? change_set::live_changed : 0U));
        if (!timeline_.replace_clip(std::move(clip))) return false;
        if (stamp_back) inverse_.push_back(std::move(*stamp_back));
        inverse_.push_back(std::move(back));
        return true;
    }

    bool run(const operation::begin_clip& one) {
        auto clip = one.clip->id();
        touch_clip(clip, one.row, change_set::live_changed);
        return done(timeline_.insert_live_clip(one.row, with_stamp(one.clip)),
                    operation::remove_clip{std::move(clip)});
    }

    bool run(const operation::finish_clip& one) {
        const auto place = timeline_.find_clip(one.clip);
        if (!place || !place->is_live || !timeline_.row_index(place->row)) return false;
        if (!std::isfinite(one.secs_start) || !std::isfinite(one.secs_end)) return false;
        sxy_CLIP clip = *place->clip;
        clip.set_secs_start(one.secs_start);
        clip.set_secs_end(one.secs_end);
        if (stamp_) put_stamp_on_new(clip);  // that of its beginning, if any, stood for a kill
        touch_clip(one.clip, place->row, change_set::live_changed | change_set::clips_changed);
        timeline_.remove_clip(one.clip);
        note_new(one.clip);
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

    bool run(const operation::shift_times& one) {
        touched_.kinds |= change_set::everything & ~change_set::others_changed;
        return done(timeline_.shift_times(one.seconds), operation::shift_times{-one.seconds});
    }

    bool run(const operation::shift_clips& one) {
        if (!std::isfinite(one.seconds)) return false;
        operation::shift_clips back{{}, -one.seconds};
        for (const auto& clip : one.clips) {
            const auto place = timeline_.find_clip(clip);
            if (!place || place->is_live) continue;
            touch_clip(clip, place->row, change_set::clips_changed | change_set::qualifiers_changed);
            if (!timeline_.replace_clip(std::move(*clip_shifted(*place->clip, one.seconds)))) continue;
            back.clips.push_back(clip);
        }
        return done(true, std::move(back));
    }

    sxy_DATA_root& timeline_;
    change_set& touched_;
    unique_appender<shared_text> rows_;
    unique_appender<std::string> clips_;
    std::vector<operation::any> inverse_;
    std::optional<sxy_clip_EDIT_info_k11> stamp_;
    double coll_id_ = 0;                         // the same, with stamp_
    std::unordered_set<std::string> new_clips_;  // while there is a stamp
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
    // A single operation that cannot be done has changed nothing.
    const bool is_single = edit.operations.size() == 1;
    const auto growing_before = is_single ? std::vector<clip_place>() : timeline.live_clips();
    edit_applier applier(timeline, touched, edit.operations, edit.stamp);
    expect_clips_of(edit, timeline);
    for (const auto& one : edit.operations) {
        if (applier.apply(one)) continue;
        if (!is_single) withdraw_edit(timeline, {"", "", applier.take_inverse()}, growing_before);
        return edit_could_not_be_done(edit.name, what_it_changes_is_gone());
    }
    if (!edit.others.empty()) touched.kinds |= change_set::others_changed;
    return timeline_edit{edit.name, edit.scope, applier.take_inverse(), {}, true, reversed(edit.others)};
}

void withdraw_edit(sxy_DATA_root& timeline, const timeline_edit& inverse, std::vector<clip_place> growing) {
    change_set undone;
    edit_applier back(timeline, undone, inverse.operations);
    for (const auto& one : inverse.operations) (void)back.apply(one);
    timeline.set_live_clips(std::move(growing));
}

void complete_edit(timeline_edit& edit, const edit_stamp& stamp) {
    if (edit.is_complete) return;
    if (!edit.stamp && are_stamped(edit.operations)) edit.stamp = stamp;
    for (auto& one : edit.operations) {
        auto* added = std::get_if<operation::add_tombstones>(&one);
        if (!added) continue;
        for (auto& tombstone : added->tombstones) {
            if (tombstone.edit_author.empty()) tombstone.edit_author = stamp.author;
        }
    }
}

double seconds_shifted(const timeline_edit& edit) {
    double seconds = 0;
    for (const auto& any : edit.operations) {
        if (const auto* shift = std::get_if<operation::shift_times>(&any)) seconds += shift->seconds;
    }
    return seconds;
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
    edit.name = edit.operations.size() == 1 ? edit_name::delete_clip : edit_name::delete_clips;
    for (auto& [index, added] : tombstones) edit.operations.emplace_back(std::move(added));
    return edit;
}

}  // namespace vistels
