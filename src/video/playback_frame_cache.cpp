// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/playback_frame_cache.h"

#include <iterator>
#include <utility>

namespace vistels {

namespace {

bool follows(const picture& earlier, const picture& later) {
    return earlier.until_stamp == later.stamp;
}

}  // namespace

void playback_frame_cache::insert(picture_pointer made) {
    auto gone = frames_.lower_bound(made->stamp);
    while (gone != frames_.end() &&
           (made->last || gone->first == made->stamp || gone->first < made->until_stamp)) {
        const auto next = std::next(gone);
        erase(gone);
        gone = next;
    }
    bytes_ += made->bytes.size();
    frames_.emplace_hint(gone, made->stamp, std::move(made));
}

playback_frame_cache::frame_map::const_iterator playback_frame_cache::standing_at(std::int64_t stamp) const {
    const auto after = frames_.upper_bound(stamp);
    if (after == frames_.begin()) return frames_.end();
    const auto before = std::prev(after);
    return stamp < before->second->until_stamp || before->second->last ? before : frames_.end();
}

picture_pointer playback_frame_cache::at(std::int64_t stamp) const {
    const auto found = standing_at(stamp);
    return found == frames_.end() ? nullptr : found->second;
}

picture_pointer playback_frame_cache::at_or_before(std::int64_t stamp) const {
    const auto after = frames_.upper_bound(stamp);
    return after == frames_.begin() ? nullptr : std::prev(after)->second;
}

picture_pointer playback_frame_cache::after(std::int64_t stamp) const {
    const auto found = frames_.upper_bound(stamp);
    return found == frames_.end() ? nullptr : found->second;
}

picture_pointer playback_frame_cache::near(std::int64_t stamp, std::int64_t from, std::int64_t until) const {
    const auto after = frames_.upper_bound(stamp);
    if (after != frames_.begin() && std::prev(after)->second->until_stamp > from)
        return std::prev(after)->second;
    return after != frames_.end() && after->first <= until ? after->second : nullptr;
}

playback_frame_cache::run playback_frame_cache::run_at(std::int64_t stamp) const {
    const auto found = standing_at(stamp);
    if (found == frames_.end()) return {stamp, stamp, 0, 0, false};
    auto first = found;
    run held;
    while (first != frames_.begin() && follows(*std::prev(first)->second, *first->second)) {
        --first;
        ++held.frames_before;
    }
    auto last = found;
    while (std::next(last) != frames_.end() && follows(*last->second, *std::next(last)->second)) {
        ++last;
        ++held.frames_after;
    }
    held.from = first->first;
    held.until = last->second->until_stamp;
    held.reaches_end = last->second->last;
    return held;
}

void playback_frame_cache::erase(frame_map::iterator gone) {
    bytes_ -= gone->second->bytes.size();
    frames_.erase(gone);
}

void playback_frame_cache::keep_within(std::size_t most, std::int64_t stamp, std::size_t before,
                                       std::size_t after) {
    const auto later = frames_.upper_bound(stamp);
    const std::size_t stay = standing_at(stamp) == frames_.end() ? 0 : 1;
    auto earlier_held = static_cast<std::size_t>(std::distance(frames_.begin(), later)) - stay;
    auto later_held = frames_.size() - earlier_held - stay;
    while (bytes_ > most && earlier_held + later_held > 0) {
        const auto first = frames_.begin();
        const auto last = std::prev(frames_.end());
        const bool is_first_spare = earlier_held > before;
        const bool is_last_spare = later_held > after;
        const bool is_first_farther = stamp - first->first >= last->first - stamp;
        const bool goes_first = is_first_spare == is_last_spare ? is_first_farther : is_first_spare;
        if (later_held == 0 || (goes_first && earlier_held > 0)) {
            erase(first);
            --earlier_held;
        } else {
            erase(last);
            --later_held;
        }
    }
}

void playback_frame_cache::forget_sparse() {
    for (auto place = frames_.begin(); place != frames_.end();) {
        const auto next = std::next(place);
        if (place->second->sparse) erase(place);
        place = next;
    }
}

void playback_frame_cache::clear() {
    frames_.clear();
    bytes_ = 0;
}

}  // namespace vistels
