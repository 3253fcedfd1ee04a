// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/offset_changes.h"

#include <cmath>

#include "app/event/change_names.h"
#include "app/event/event_failures.h"
#include "video/video_coll_Offsets.h"
#include "video/video_coll_Records.h"

namespace vistels {

namespace {

result<std::shared_ptr<single_Vistel_CTR>> vistel_of(const video_collection_ROOT& collection,
                                                     const std::string& name) {
    auto vistel = collection.find_vistel(name);
    if (!vistel) return vistel_is_gone(name);
    return vistel;
}

result<void> put_offset(single_Vistel_CTR& vistel, double seconds) {
    if (!std::isfinite(seconds)) return offset_is_no_number(vistel.name());
    if (std::abs(seconds) > most_stored_seconds) return offset_is_too_long(vistel.name());
    vistel.set_manual_start_offset(seconds);
    return {};
}

double lead_of(const video_collection_ROOT& collection, const single_Vistel_CTR& vistel) {
    return lead_for_clips(offsets_of(collection), {vistel.number(), vistel.manual_start_offset()});
}

collection_change offset_change(const std::string& vistel,
                                std::function<result<void>(video_collection_ROOT&)> change) {
    return {change_name::vistel_offset, vistel, std::move(change)};
}

}  // namespace

collection_change plan_offset(const std::string& vistel, double seconds) {
    return offset_change(vistel, [vistel, seconds](video_collection_ROOT& copy) -> result<void> {
        const auto found = vistel_of(copy, vistel);
        return found ? put_offset(*found.value(), seconds) : found.error();
    });
}

collection_change plan_offset_nudge(const std::string& vistel, double seconds) {
    return offset_change(vistel, [vistel, seconds](video_collection_ROOT& copy) -> result<void> {
        const auto found = vistel_of(copy, vistel);
        if (!found) return found.error();
        return put_offset(*found.value(), found.value()->manual_start_offset().value_or(0) + seconds);
    });
}

// Both show it at one collection time when offset and movie time add up to the same.
collection_change plan_same_moment(const seen_moment& fixed, const seen_moment& moved) {
    return offset_change(moved.vistel, [fixed, moved](video_collection_ROOT& copy) -> result<void> {
        const auto stays = vistel_of(copy, fixed.vistel);
        if (!stays) return stays.error();
        const auto moves = vistel_of(copy, moved.vistel);
        if (!moves) return moves.error();
        if (stays.value() == moves.value()) return moment_needs_two_vistels();
        const double offset = stays.value()->manual_start_offset().value_or(0);
        return put_offset(*moves.value(), offset + fixed.movie_seconds - moved.movie_seconds);
    });
}

// The times of the timeline move with the largest offset, by which the new offset may itself be reached.
collection_change plan_coded_moment(double collection_seconds, const seen_moment& moved) {
    return offset_change(moved.vistel, [=](video_collection_ROOT& copy) -> result<void> {
        const auto moves = vistel_of(copy, moved.vistel);
        if (!moves) return moves.error();
        const double largest = largest_offset_for_clips(offsets_of(copy));
        return put_offset(*moves.value(), collection_seconds + largest - moved.movie_seconds);
    });
}

std::optional<double> movie_time_at(const video_collection_ROOT& collection, const std::string& vistel,
                                    double collection_seconds) {
    const auto found = collection.find_vistel(vistel);
    if (!found) return std::nullopt;
    return collection_seconds + lead_of(collection, *found);
}

std::optional<double> collection_time_of(const video_collection_ROOT& collection, const seen_moment& moment) {
    const auto found = collection.find_vistel(moment.vistel);
    if (!found) return std::nullopt;
    return moment.movie_seconds - lead_of(collection, *found);
}

}  // namespace vistels
