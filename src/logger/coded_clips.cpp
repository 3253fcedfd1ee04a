// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/coded_clips.h"

#include <algorithm>
#include <cmath>

namespace vistels {

namespace {

// Times that were moved there and back may differ by a rounding.
constexpr double rounding_seconds = 1e-6;

bool is_same(clip_span a, clip_span b) {
    return std::abs(a.start - b.start) <= rounding_seconds && std::abs(a.end - b.end) <= rounding_seconds;
}

}  // namespace

coded_clips::knowledge& coded_clips::to_change(const std::string& clip) {
    const auto found = known_.find(clip);
    if (is_trial_)
        earlier_.try_emplace(clip, found == known_.end() ? std::nullopt : std::optional(found->second));
    return found == known_.end() ? known_[clip] : found->second;
}

void coded_clips::begin_trial() {
    is_trial_ = true;
    made_before_ = made_.size();
}

void coded_clips::end_trial() {
    is_trial_ = false;
    earlier_.clear();
}

void coded_clips::take_back_trial() {
    made_.resize(made_before_);
    for (auto& [clip, before] : earlier_) {
        if (before) {
            known_[clip] = std::move(*before);
        } else {
            known_.erase(clip);
        }
    }
    end_trial();
}

void coded_clips::note_button(const std::string& clip, const std::string& button) {
    to_change(clip).button = button;
}

void coded_clips::note_held(const std::string& clip, clip_span span, clip_span held) {
    auto& given = to_change(clip).given;
    const auto same = std::find_if(given.begin(), given.end(),
                                   [&](const given_span& one) { return is_same(one.span, span); });
    if (same != given.end()) {
        same->held = held;
    } else {
        given.push_back({span, held});
    }
}

std::string coded_clips::button_of(const std::string& clip) const {
    const auto found = known_.find(clip);
    return found == known_.end() ? std::string() : found->second.button;
}

std::optional<clip_span> coded_clips::held_time(const sxy_CLIP& clip) const {
    const auto found = known_.find(clip.id());
    if (found == known_.end()) return std::nullopt;
    const clip_span span{clip.secs_start(), clip.secs_end()};
    for (const auto& one : found->second.given) {
        if (is_same(one.span, span)) return one.held;
    }
    return std::nullopt;
}

void coded_clips::shift(double seconds) {
    for (auto& [clip, one_known] : known_) {
        for (auto& one : one_known.given) {
            for (auto* span : {&one.span, &one.held}) *span = {span->start + seconds, span->end + seconds};
        }
    }
}

}  // namespace vistels
