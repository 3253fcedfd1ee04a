// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/merge_timeline.h"

#include <algorithm>
#include <limits>
#include <map>
#include <unordered_set>

#include "timeline/edits/edit_failures.h"
#include "timeline/edits/edit_names.h"
#include "timeline/edits/tombstones.h"
#include "util/uuid.h"

namespace vistels {

namespace {

// When a clip was edited last; one that says nothing was edited before all others.
double edit_seconds_of(const sxy_CLIP& clip) {
    return clip.edit_info().edit_seconds.value_or(-std::numeric_limits<double>::infinity());
}

class timeline_merge {
  public:
    timeline_merge(const sxy_DATA_root& mine, const timeline_snapshot& other, double now)
        : mine_(mine),
          other_(other),
          deleted_here_(tombstones_of(mine.rows(), now)),
          deleted_there_(tombstones_of(other.rows, now)) {
        for (const auto& row : mine.rows()) order_.push_back(row->uuid());
        for (const auto& row : other.rows) {
            for (const auto& clip : row->clips()) clips_there_.insert(clip->id());
        }
    }

    result<timeline_edit> plan() {
        std::vector<shared_text> rows;
        for (const auto& row : other_.rows) rows.push_back(merge_row(*row));
        for (std::size_t at = 0; at < rows.size(); ++at) {
            if (!rows[at].empty()) merge_clips(*other_.rows[at], rows[at]);
        }
        merge_deletions();
        add_tombstones();
        if (grows_) return merged_clip_still_grows();
        return std::move(edit_);
    }

  private:
    void add(operation::any one) { edit_.operations.push_back(std::move(one)); }

    bool was_deleted_here(const sxy_CLIP& clip) const {
        return deleted_here_.contains(clip.id()) && !mine_.find_clip(clip.id());
    }

    // The row here that is the same as `row`; an empty text when there is none.
    shared_text same_row(const sxy_ROW& row) {
        const auto take = [this](const sxy_ROW& found) {
            taken_.insert(found.uuid().str());
            return found.uuid();
        };
        if (const auto found = row.uuid().empty() ? nullptr : mine_.row(row.uuid())) return take(*found);
        for (const auto& one : mine_.rows()) {
            if (one->name() != row.name() || one->category() != row.category()) continue;
            // Not a row that is there by its own UUID.
            const bool is_there = std::any_of(other_.rows.begin(), other_.rows.end(), [&](const auto& there) {
                return there->uuid() == one->uuid();
            });
            if (!is_there && !taken_.contains(one->uuid().str())) return take(*one);
        }
        return {};
    }

    // Returns the row here that takes the clips of `row`, made when it is missing; an empty text when it is
    // not wanted.
    shared_text merge_row(const sxy_ROW& row) {
        shared_text here = same_row(row);
        if (here.empty()) {
            const auto& clips = row.clips();
            const bool all_deleted =
                !clips.empty() && std::all_of(clips.begin(), clips.end(),
                                              [&](const auto& clip) { return was_deleted_here(*clip); });
            if (all_deleted) return {};
            here = insert_row(row);
        }
        above_ = here;
        return here;
    }

    shared_text insert_row(const sxy_ROW& row) {
        sxy_ROW made = row;
        made.clips().assign({});
        made.set_deleted_clips({});
        const bool taken = std::find(order_.begin(), order_.end(), row.uuid()) != order_.end();
        if (row.uuid().empty() || taken) made.set_uuid(shared_text(new_uuid()));
        const auto above = std::find(order_.begin(), order_.end(), above_);
        const auto place = above == order_.end() ? order_.begin() : above + 1;
        const auto index = static_cast<std::size_t>(place - order_.begin());
        order_.insert(place, made.uuid());
        const shared_text uuid = made.uuid();
        add(operation::insert_row{index, std::move(made)});
        return uuid;
    }

    void merge_clips(const sxy_ROW& row, const shared_text& here) {
        for (const auto& clip : row.clips()) {
            if (!clip->id().empty() && !merged_.insert(clip->id()).second) continue;
            const auto place = clip->id().empty() ? std::nullopt : mine_.find_clip(clip->id());
            if (!place) {
                if (was_deleted_here(*clip)) continue;
                insert_clip(*clip, here);
            } else if (edit_seconds_of(*clip) > edit_seconds_of(*place->clip)) {
                grows_ = grows_ || place->is_live;
                add(operation::remove_clip{clip->id()});
                insert_clip(*clip, here);
            }
        }
    }

    void insert_clip(const sxy_CLIP& clip, const shared_text& here) {
        sxy_CLIP made = clip;
        if (made.id().empty()) made.set_id(new_uuid());
        made.set_selected(false);
        add(operation::insert_clip{here, std::move(made)});
    }

    void merge_deletions() {
        for (const auto& row : mine_.rows()) {
            for (const auto& clip : row->clips()) {
                const auto found = deleted_there_.find(clip->id());
                if (found == deleted_there_.end() || clips_there_.contains(clip->id())) continue;
                if (edit_seconds_of(*clip) > found->second.clip_last_Edited_secs) continue;
                add(operation::remove_clip{clip->id()});
                coming_tombstones_[row->uuid().str()].push_back(found->second);
                deleted_here_.emplace(clip->id(), found->second);
            }
        }
    }

    // So that a third copy learns of them here: those of clips that neither has go to the first row.
    void add_tombstones() {
        if (order_.empty()) return;
        for (const auto& [clip, one] : deleted_there_) {
            if (deleted_here_.contains(clip) || mine_.find_clip(clip) || clips_there_.contains(clip))
                continue;
            coming_tombstones_[order_.front().str()].push_back(one);
        }
        for (auto& [uuid, coming] : coming_tombstones_) {
            const auto row = mine_.row(shared_text(uuid));
            sxy_ROW changed;
            if (row) changed = *row;
            changed.set_uuid(shared_text(uuid));
            std::sort(coming.begin(), coming.end(), [](const auto& a, const auto& b) {
                return a.clip_last_Edited_secs < b.clip_last_Edited_secs;
            });
            auto all = changed.deleted_clips();
            all.insert(all.end(), coming.begin(), coming.end());
            add(plan_tombstones(changed, std::move(all)));
        }
    }

    const sxy_DATA_root& mine_;
    const timeline_snapshot& other_;
    tombstones_by_clip deleted_here_;
    const tombstones_by_clip deleted_there_;
    std::unordered_set<std::string> clips_there_;
    std::unordered_set<std::string> merged_;  // clips of `other_` that were seen
    std::unordered_set<std::string> taken_;   // rows here that are the same as one there
    std::vector<shared_text> order_;          // the rows as they will be
    shared_text above_;                       // the last row that was merged
    std::map<std::string, std::vector<sxy_Deleted_Clip_Item_k11>> coming_tombstones_;  // by row
    bool grows_ = false;
    timeline_edit edit_{
        edit_name::merge_timelines, "", {}, {}, true};  // clips come as the other copy has them
};

}  // namespace

result<timeline_edit> plan_merge_timeline(const sxy_DATA_root& mine, const timeline_snapshot& other,
                                          double now) {
    if (!other.uuid.empty() && other.uuid != mine.uuid()) {
        return timelines_are_no_copies();
    }
    return timeline_merge(mine, other, now).plan();
}

}  // namespace vistels
