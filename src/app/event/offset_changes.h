// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "app/event/collection_changes.h"

namespace vistels {

// The changes that align vistels with each other. `vistel` is a UUID, or a number as text; all times are
// seconds. The vistel moves against the others, which stay on the frames of their clips.

// Its start offset becomes `seconds`. Changes of one vistel soon after each other become one undo step.
collection_change plan_offset(const std::string& vistel, double seconds);
// Its start offset grows by `seconds`: with a movie's frame duration, by a frame of its own.
collection_change plan_offset_nudge(const std::string& vistel, double seconds);

// An instant that was seen in a vistel at a time of its own movie.
struct seen_moment {
    std::string vistel;
    double movie_seconds = 0;
};
// "Same moment": `moved` comes to show its instant when `fixed` shows the same one.
collection_change plan_same_moment(const seen_moment& fixed, const seen_moment& moved);

// The same for what was coded without a camera: `moved` comes to show its instant where the timeline has it,
// at `collection_seconds`. All other vistels stay on the frames of their clips.
collection_change plan_coded_moment(double collection_seconds, const seen_moment& moved);

// The movie time that a vistel has at a collection time, and the other way round, as things are now; nothing
// when there is no such vistel.
std::optional<double> movie_time_at(const video_collection_ROOT& collection, const std::string& vistel,
                                    double collection_seconds);
std::optional<double> collection_time_of(const video_collection_ROOT& collection, const seen_moment& moment);

}  // namespace vistels
