// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/part_changes.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "app/event/change_names.h"
#include "app/event/event_failures.h"
#include "app/event/offset_changes.h"
#include "video/part_placing.h"
#include "video/video_coll_Records.h"

namespace vistels {

namespace {

constexpr double no_movement_seconds = 1e-9;

// The clips that lie on parts which move, by how far.
std::vector<operation::any> clip_movements(const sxy_DATA_root& timeline, double lead,
                                           const movie_Part_DRONE_Offsets_Root& before,
                                           const movie_Part_DRONE_Offsets_Root& after) {
    std::map<std::size_t, operation::shift_clips> by_part;
    for (std::size_t index = 0; index < before.parts.size(); ++index) {
        const double seconds = part_movement(before, after, index);
        if (std::abs(seconds) > no_movement_seconds) by_part[index].seconds = seconds;
    }
    if (by_part.empty()) return {};
    for (const auto& row : timeline.rows()) {
        for (const auto& clip : row->clips()) {
            const auto part = part_at(before, (clip->secs_start() + clip->secs_end()) / 2 + lead);
            const auto moves = part ? by_part.find(*part) : by_part.end();
            if (moves != by_part.end()) moves->second.clips.push_back(clip->id());
        }
    }
    std::vector<operation::any> all;
    for (auto& [part, shift] : by_part) {
        if (!shift.clips.empty()) all.emplace_back(std::move(shift));
    }
    return all;
}

// The parts come to lie as in `parts`, which has the same parts in the same order.
collection_change plan_parts(const video_collection_ROOT& collection, const sxy_DATA_root& timeline,
                             const std::string& vistel, const movie_Part_DRONE_Offsets_Root& parts) {
    collection_change change{change_name::movie_parts, vistel, {}};
    change.change = [vistel, parts](video_collection_ROOT& copy) -> result<void> {
        const auto found = copy.find_vistel(vistel);
        if (!found) return vistel_is_gone(vistel);
        auto placed = found->parts();
        if (placed.parts.size() != parts.parts.size()) return parts_changed_meanwhile(found->name());
        for (std::size_t index = 0; index < placed.parts.size(); ++index) {
            const double gap = parts.parts[index].gap_before;
            if (!(gap >= 0)) return gap_is_negative();
            if (gap > most_stored_seconds) return gap_is_too_long();
            placed.parts[index].gap_before = gap;
        }
        found->set_parts(std::move(placed));
        return {};
    };
    const auto found = collection.find_vistel(vistel);
    if (found && found->locks_clips()) {
        const double lead = movie_time_at(collection, vistel, 0).value_or(0);
        change.operations = clip_movements(timeline, lead, found->parts(), parts);
    }
    return change;
}

}  // namespace

collection_change plan_gap(const video_collection_ROOT& collection, const sxy_DATA_root& timeline,
                           const std::string& vistel, std::size_t part, double seconds) {
    const auto found = collection.find_vistel(vistel);
    const auto parts = found ? found->parts() : movie_Part_DRONE_Offsets_Root();
    if (found && (part >= parts.parts.size() || !std::isfinite(seconds) || seconds < 0)) {
        return {change_name::movie_parts, vistel,
                [](video_collection_ROOT&) -> result<void> { return gap_is_before_no_part(); }};
    }
    return plan_parts(collection, timeline, vistel, with_gap(parts, part, seconds));
}

collection_change plan_more_parts(const std::string& vistel, const part_list& brought) {
    return {change_name::append_movies, vistel,
            [vistel, brought](video_collection_ROOT& copy) -> result<void> {
                const auto found = copy.find_vistel(vistel);
                if (!found) return vistel_is_gone(vistel);
                auto all = found->parts();
                all.parts.insert(all.parts.end(), brought.begin(), brought.end());
                found->set_parts(std::move(all));
                return {};
            }};
}

collection_change plan_other_movies(const std::string& vistel, const part_list& made_of,
                                    const part_list& brought) {
    return {change_name::deinterlace_vistel, vistel,
            [vistel, made_of, brought](video_collection_ROOT& copy) -> result<void> {
                const auto found = copy.find_vistel(vistel);
                if (!found) return vistel_is_gone(vistel);
                auto now = found->parts();
                const auto is_same = [](const auto& one, const auto& other) {
                    return one.path == other.path;
                };
                if (!std::equal(now.parts.begin(), now.parts.end(), made_of.begin(), made_of.end(), is_same))
                    return parts_changed_meanwhile(found->name());
                for (std::size_t at = 0; at < brought.size(); ++at) now.parts[at].path = brought[at].path;
                found->set_parts(std::move(now));
                return {};
            }};
}

collection_change plan_found_movie(const std::string& vistel, const movie_Part_DRONE_Offset_Item& brought) {
    return {change_name::find_movie, vistel, [vistel, brought](video_collection_ROOT& copy) -> result<void> {
                const auto found = copy.find_vistel(vistel);
                if (!found) return vistel_is_gone(vistel);
                auto parts = found->parts();
                const auto missing = std::find_if(parts.parts.begin(), parts.parts.end(),
                                                  [](const auto& part) { return part.path.empty(); });
                if (missing == parts.parts.end()) return no_movie_is_missing(found->name());
                const double longer = brought.part_duration - missing->part_duration;
                missing->path = brought.path;
                missing->part_duration = brought.part_duration;
                if (const auto next = missing + 1; next != parts.parts.end())
                    next->gap_before = std::max(0.0, next->gap_before - longer);
                found->set_parts(std::move(parts));
                return {};
            }};
}

collection_change plan_clip_lock(const std::string& vistel, bool locks) {
    return {change_name::lock_clips, vistel, [vistel, locks](video_collection_ROOT& copy) -> result<void> {
                const auto found = copy.find_vistel(vistel);
                if (!found) return vistel_is_gone(vistel);
                found->set_locks_clips(locks);
                return {};
            }};
}

}  // namespace vistels
