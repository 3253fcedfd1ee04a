// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/video_coll_Offsets.h"

#include <algorithm>
#include <cmath>

namespace vistels {

namespace {

constexpr double clip_timescale = 600;

std::int64_t media_time(double seconds) {
    const double ticks = std::round(seconds * clip_timescale);
    return std::abs(ticks) < 9e18 ? static_cast<std::int64_t>(ticks) : 0;
}

// The first counts; null when there is none, and for a number that is not positive.
const vistel_offset* item_of_number(const std::vector<vistel_offset>& items, double number) {
    for (const auto& item : items) {
        if (item.number > 0 && item.number == number) return &item;
    }
    return nullptr;
}

}  // namespace

std::vector<vistel_offset> offsets_of(const video_collection_ROOT& collection) {
    std::vector<vistel_offset> items;
    for (const auto& vistel : collection.vistels()) {
        items.push_back({vistel->number(), vistel->manual_start_offset()});
    }
    return items;
}

std::set<double> vistel_numbers_in(const timeline_snapshot& timeline) {
    std::set<double> numbers;
    const auto add = [&](const sxy_CLIP& clip) {
        const auto shown = clip.vistel_data();
        if (!shown) return;
        for (const auto& one : shown->vistels) {
            if (one.vistel_ID && std::isfinite(*one.vistel_ID)) numbers.insert(*one.vistel_ID);
        }
    };
    for (const auto& row : timeline.rows) {
        for (const auto& clip : row->clips()) add(*clip);
    }
    for (const auto& live : timeline.live_clips) add(*live.clip);
    return numbers;
}

double largest_offset_for_clips(const std::vector<vistel_offset>& items) {
    double largest = 0;
    for (const auto& item : items) largest = std::max(largest, item.offset.value_or(0));
    return largest;
}

double largest_offset_for_composer(const std::vector<vistel_offset>& items) {
    std::optional<double> largest;
    for (const auto& item : items) {
        if (item.offset && (!largest || *item.offset > *largest)) largest = item.offset;
    }
    return largest.value_or(0);
}

double offset_of_number(const std::vector<vistel_offset>& items, double number) {
    const auto* item = item_of_number(items, number);
    return item ? item->offset.value_or(0) : 0;
}

double lead_for_clips(const std::vector<vistel_offset>& items, const vistel_offset& item) {
    return largest_offset_for_clips(items) - item.offset.value_or(0);
}

double lead_for_composer(const std::vector<vistel_offset>& items, double number) {
    const auto* item = item_of_number(items, number);
    return item ? largest_offset_for_composer(items) - item->offset.value_or(0) : 0;
}

source_range source_range_of(double start, double end, double lead, double movie_duration) {
    const auto within_movie = [&](double time) { return std::min(std::max(time, 0.0), movie_duration); };
    const auto [lower, upper] = std::minmax({start + lead, end + lead});
    source_range range;
    range.from = within_movie(lower);
    range.seconds = within_movie(upper) - range.from;
    range.from_600 = media_time(range.from);
    range.duration_600 = media_time(range.seconds);
    return range;
}

}  // namespace vistels
