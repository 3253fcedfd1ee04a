// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/tombstones.h"

#include <memory>

namespace vistels {

tombstones_by_clip tombstones_of(const std::vector<row_pointer>& rows, double now) {
    tombstones_by_clip all;
    for (const auto& row : rows) {
        for (const auto& one : row->deleted_clips()) {
            if (!(now - one.clip_last_Edited_secs < tombstone_life_seconds)) continue;
            auto& latest = all[one.deleted_clip_ID];
            const bool newer =
                latest.deleted_clip_ID.empty() || latest.clip_last_Edited_secs < one.clip_last_Edited_secs;
            if (newer) latest = one;
        }
    }
    return all;
}

std::size_t leave_out_deleted_clips(timeline_snapshot& incoming, const tombstones_by_clip& deleted) {
    std::size_t left_out = 0;
    for (auto& row : incoming.rows) {
        std::vector<clip_pointer> stay;
        for (const auto& clip : row->clips()) {
            if (!deleted.contains(clip->id())) stay.push_back(clip);
        }
        if (stay.size() == row->clips().size()) continue;
        left_out += row->clips().size() - stay.size();
        auto copy = std::make_shared<sxy_ROW>(*row);
        copy->clips().assign(std::move(stay));
        row = std::move(copy);
    }
    return left_out;
}

operation::change_row plan_tombstones(const sxy_ROW& row, std::vector<sxy_Deleted_Clip_Item_k11> all) {
    operation::change_row change{row.uuid(), {}, {}};
    sxy_ROW changed = row;
    changed.set_deleted_clips(std::move(all));
    const auto stored = write_row_values(changed, 0);
    if (const auto* written = stored.find("deleted clips")) {
        change.set.add("deleted clips", *written);
    } else {
        change.unset.emplace_back("deleted clips");
    }
    return change;
}

}  // namespace vistels
