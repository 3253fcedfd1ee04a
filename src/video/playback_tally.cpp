// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/playback_tally.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vistels {

namespace {

constexpr double ticks_a_second = 60;

}  // namespace

playback_tally::playback_tally(const std::vector<playback_vistel>& vistels, synchronised_playback& playback)
    : playback_(playback), fixes_before_(playback.corrections()), jumps_(playback.jumps()) {
    for (const auto& vistel : vistels) {
        if (vistel.parts.empty()) continue;
        const auto& last = vistel.parts.back();
        counts_.push_back({vistel.uuid, vistel.lead, vistel.parts.front().start, last.start + last.duration,
                           0, 0, nullptr, std::nullopt, false});
    }
    pictures_changed_ = playback.pictures_changed.connect([this] { look(); });
}

void playback_tally::look() {
    if (std::exchange(jumps_, playback_.jumps()) != playback_.jumps()) {
        for (auto& vistel : counts_) vistel.has_jumped = true;
    }
    std::optional<double> first;
    std::optional<double> last;
    for (auto& vistel : counts_) {
        look_at(vistel);
        if (!vistel.last_seconds || !is_filmed_now(vistel)) continue;
        const double at = *vistel.last_seconds - vistel.lead;
        first = std::min(first.value_or(at), at);
        last = std::max(last.value_or(at), at);
    }
    if (first) largest_difference_ = std::max(largest_difference_, *last - *first);
}

// A vistel that has not begun, or has ended, stands still and is in step with nobody.
bool playback_tally::is_filmed_now(const count& vistel) const {
    const double seconds = playback_.collection_time() + vistel.lead;
    return seconds >= vistel.begin && seconds < vistel.end &&
           playback_.state(vistel.uuid) != vistel_state::blank;
}

void playback_tally::look_at(count& vistel) {
    const auto shown = playback_.picture(vistel.uuid);
    if (shown == vistel.last) return;
    const auto seconds = playback_.picture_seconds(vistel.uuid);
    if (shown && seconds) {
        ++vistel.frames;
        // Frames that lie between two ticks are passed over on purpose; more than those are dropped.
        const double length = shown->until - shown->time;
        const bool goes_on = vistel.last && vistel.last_seconds && !vistel.has_jumped;
        if (goes_on && length > 0 && playback_.is_playing()) {
            const double moved = std::abs(*seconds - *vistel.last_seconds);
            const double wanted = std::max(length, std::abs(playback_.rate()) / ticks_a_second);
            vistel.dropped += std::max<std::int64_t>(std::llround((moved - wanted) / length - 0.25), 0);
        }
    }
    vistel.last = shown;
    // What a jump passes over is not dropped, and what is shown until the right frame is there may be from
    // before it.
    if (playback_.state(vistel.uuid) == vistel_state::showing) vistel.has_jumped = false;
    vistel.last_seconds = shown && !vistel.has_jumped ? seconds : std::nullopt;
}

std::vector<vistel_health> playback_tally::health() const {
    std::vector<vistel_health> all;
    for (const auto& vistel : counts_) {
        all.push_back({vistel.uuid, vistel.frames, vistel.dropped, playback_.decode_milliseconds(vistel.uuid),
                       playback_.difference(vistel.uuid)});
    }
    return all;
}

void playback_tally::add_to(property_dictionary& printed) const {
    property_dictionary frames;
    property_dictionary dropped;
    for (const auto& vistel : counts_) {
        frames.add(vistel.uuid, vistel.frames);
        dropped.add(vistel.uuid, vistel.dropped);
    }
    printed.add("frames", std::move(frames));
    printed.add("dropped", std::move(dropped));
    printed.add("largest_difference", largest_difference_);
    printed.add("fixes", playback_.corrections() - fixes_before_);
}

void playback_tally::add_health_to(property_dictionary& printed) const {
    property_dictionary decoding;
    property_dictionary differences;
    for (const auto& vistel : health()) {
        decoding.add(vistel.uuid, vistel.decode_milliseconds);
        differences.add(vistel.uuid, vistel.difference);
    }
    printed.add("decode_milliseconds", std::move(decoding));
    printed.add("difference", std::move(differences));
}

}  // namespace vistels
