// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/trigger_track.h"

#include <algorithm>
#include <string_view>

namespace vistels {

namespace {

constexpr const char* down_type = "going down";
constexpr const char* up_type = "going up";

}  // namespace

void trigger_track::set_buttons(const std::vector<button_record>& buttons) {
    all_.clear();
    for (const auto& button : buttons) {
        for (const auto& trigger : button->triggers()) {
            const std::string_view type = trigger.trigger_Type.str();
            if (type == down_type || type == up_type)
                all_.push_back({trigger.trigger_Time, button->uuid(), type == down_type});
        }
    }
    std::stable_sort(all_.begin(), all_.end(), [](const auto& a, const auto& b) { return a.at < b.at; });
}

void trigger_track::begin(double at) {
    from_ = at;
    is_from_passed_ = stopped_at_ == at;
    stopped_at_.reset();
}

void trigger_track::stop() {
    if (from_ && is_from_passed_) stopped_at_ = from_;
    from_.reset();
}

void trigger_track::jump(double to) {
    stopped_at_.reset();
    if (from_) begin(to);
}

std::size_t trigger_track::first_from(double seconds, bool is_passed) const {
    const auto found = std::partition_point(all_.begin(), all_.end(), [&](const passing& one) {
        return is_passed ? one.at <= seconds : one.at < seconds;
    });
    return static_cast<std::size_t>(found - all_.begin());
}

std::vector<trigger_track::passing> trigger_track::pass(double to) {
    if (!from_ || to < *from_) return {};
    const auto first = static_cast<std::ptrdiff_t>(first_from(*from_, is_from_passed_));
    const auto last = static_cast<std::ptrdiff_t>(first_from(to, true));
    from_ = to;
    is_from_passed_ = true;
    return {all_.begin() + first, all_.begin() + std::max(first, last)};
}

std::optional<double> trigger_track::next() const {
    if (!from_) return std::nullopt;
    const std::size_t at = first_from(*from_, is_from_passed_);
    return at < all_.size() ? std::optional(all_[at].at) : std::nullopt;
}

void trigger_track::shift(double seconds) {
    if (from_) *from_ += seconds;
    if (stopped_at_) *stopped_at_ += seconds;
}

}  // namespace vistels
