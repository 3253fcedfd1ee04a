// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "timeline/edits/timeline_edit.h"
#include "timeline/files/sxy_Save_Load.h"
#include "util/json.h"

namespace vistels::testing {

inline sxy_ROW row_of(const std::string& uuid, const std::string& name) {
    sxy_ROW row;
    row.set_uuid(shared_text(uuid));
    row.set_name(name);
    return row;
}

inline sxy_CLIP clip_of(const std::string& uuid, double start, double end) {
    sxy_CLIP clip;
    clip.set_id(uuid);
    clip.set_secs_start(start);
    clip.set_secs_end(end);
    return clip;
}

inline qual_ITEM qualifier_of(const std::string& uuid, const std::string& name) {
    qual_ITEM item;
    item.set_uuid(uuid);
    item.set_name(shared_text(name));
    return item;
}

// Puts a row of that identity and name behind the others.
inline timeline_edit add_row(const std::string& uuid) {
    return {"Row", "", {operation::insert_row{99, row_of(uuid, uuid)}}};
}

// A timeline to which these were done.
inline sxy_DATA_root timeline_of(std::vector<operation::any> operations) {
    sxy_DATA_root timeline;
    change_set touched;
    const auto applied = apply_edit(timeline, {"", "", std::move(operations)}, touched);
    EXPECT_TRUE(applied) << applied.message();
    return timeline;
}

// Everything that is stored, and the growing clips.
inline std::string state_text(const sxy_DATA_root& timeline) {
    const timeline_snapshot snapshot{timeline.uuid(), timeline.description(), timeline.kept(),
                                     timeline.rows(), timeline.live_clips(),  timeline.tags()};
    std::string text = write_json(write_timeline(snapshot), json_layout::one_line);
    for (const auto& live : snapshot.live_clips) {
        text += "\n" + live.row.str() + write_json(write_clip(*live.clip), json_layout::one_line);
    }
    return text;
}

// Edits of every kind, some of which cannot be done. They bring their stamps, so that the same ones lead to
// the same state.
class random_edits {
  public:
    explicit random_edits(unsigned seed, bool with_growing = true)
        : random_(seed), kinds_(with_growing ? 13 : 11) {}

    timeline_edit make(const sxy_DATA_root& timeline) {
        timeline_edit edit{"edit " + std::to_string(++count_), "", {}};
        const int operations = 1 + below(3);
        for (int n = 0; n < operations; ++n) edit.operations.push_back(one(timeline));
        edit.stamp = edit_stamp{count_ % 3 == 0 ? "" : "me", count_ / 4.0};
        return edit;
    }

  private:
    int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
    double time() { return below(4000) / 4.0; }
    std::string fresh(const char* kind) { return kind + std::to_string(++count_); }

    shared_text any_row(const sxy_DATA_root& timeline) {
        if (timeline.rows().empty()) return shared_text("none");
        return timeline.rows()[static_cast<std::size_t>(below(static_cast<int>(timeline.rows().size())))]
            ->uuid();
    }
    std::string any_clip(const sxy_DATA_root& timeline) {
        if (!timeline.live_clips().empty() && below(3) == 0) return timeline.live_clips().front().clip->id();
        const auto row = timeline.row(any_row(timeline));
        if (!row || row->clips().empty()) return "nobody";
        return row->clips()[static_cast<std::size_t>(below(static_cast<int>(row->clips().size())))]->id();
    }

    operation::any one(const sxy_DATA_root& timeline) {
        const auto index = static_cast<std::size_t>(below(5));
        property_dictionary set;
        switch (below(kinds_)) {
            case 0:
                return operation::insert_row{index, row_of(fresh("row"), "name " + std::to_string(below(5)))};
            case 1:
                return operation::remove_row{any_row(timeline)};
            case 2:
                return operation::move_row{any_row(timeline), index};
            case 3:
                if (below(3) == 0) return tombstones(timeline);
                set.add("height", time());
                return operation::change_row{any_row(timeline), set, {property_value("color")}};
            case 4:
                // Quarters of seconds are moved and moved back without rounding.
                if (below(12) == 0) return operation::shift_times{time() - 500};
                if (below(6) == 0)
                    return operation::shift_clips{{any_clip(timeline), any_clip(timeline)}, time() - 500};
                set.add("time_start", time());
                set.add("stars", below(6));
                return operation::change_clip{any_clip(timeline), set, {property_value("color")}};
            case 5:
                return operation::remove_clip{any_clip(timeline)};
            case 6:
                return operation::move_clip{any_clip(timeline), any_row(timeline)};
            case 7:
                return operation::insert_qualifier{any_clip(timeline), index,
                                                   qualifier_of(fresh("q"), "Goal")};
            case 8: {
                const auto clip = any_clip(timeline);
                const auto place = timeline.find_clip(clip);
                const bool has = place && !place->clip->qualifiers()->empty();
                return operation::remove_qualifier{clip,
                                                   has ? place->clip->qualifiers()->front().uuid() : "q"};
            }
            case 11:
                return operation::begin_clip{any_row(timeline), clip_of(fresh("live"), time(), 0)};
            case 12:
                if (timeline.live_clips().empty()) return operation::remove_clip{"nobody"};
                return operation::finish_clip{timeline.live_clips().back().clip->id(), time(), time()};
            default:
                return operation::insert_clip{any_row(timeline), clip_of(fresh("clip"), time(), time())};
        }
    }

    operation::any tombstones(const sxy_DATA_root& timeline) {
        const auto row = timeline.row(any_row(timeline));
        if (!row) return operation::add_tombstones{shared_text("none"), {}};
        if (const auto all = row->deleted_clips(); !all.empty() && below(2) == 0) {
            return operation::remove_tombstones{row->uuid(), {all.back().deleted_clip_ID, "nobody"}};
        }
        constexpr double not_expired = 1e11;
        return operation::add_tombstones{
            row->uuid(),
            {{fresh("gone"), "me", not_expired + time()}, {fresh("gone"), "", not_expired + time()}}};
    }

    std::mt19937 random_;
    int kinds_;
    int count_ = 0;
};

}  // namespace vistels::testing
