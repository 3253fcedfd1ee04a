// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/automatic_presser.h"

#include <algorithm>
#include <utility>

#include "app/event/open_event.h"
#include "logger/press_engine.h"

namespace vistels {

namespace {

// Clips are deleted in one of so many cycles, and so many at most.
constexpr std::size_t cycles_to_delete_in = 5;
constexpr std::size_t most_deleted = 3;
// Sums of times are not exact.
constexpr double rounding_seconds = 1e-6;

}  // namespace

automatic_presser::automatic_presser(open_event& event, run_loop& loop, std::uint32_t seed)
    : event_(event), loop_(loop), presses_(seed) {
    fired_ = event.logger().fired.connect([this](const button_fired& fired) { take_fired(fired); });
    access_ = event.timeline().access_changed.connect([this] { follow(); });
    changed_ = event.timeline().changed.connect([this](const change_set& change) { take_change(change); });
}

automatic_presser::~automatic_presser() {
    loop_.stop_timer(timer_);
    release(presses_.take_all());
}

void automatic_presser::set_settings(const test_press_settings& settings) {
    settings_ = settings;
    next_cycle_ = loop_.time().seconds() + settings.seconds_between_cycles;
    follow();
}

void automatic_presser::follow() {
    const bool pressed =
        std::exchange(is_pressing_, settings_.presses_buttons && !event_.timeline().is_read_only());
    if (!is_pressing_) release(presses_.take_all());
    wait_for_next();
    if (pressed != is_pressing_) changed.emit();
}

void automatic_presser::wait_for_next() {
    loop_.stop_timer(std::exchange(timer_, 0));
    if (!is_pressing_) return;
    const double next = std::min(next_cycle_, presses_.next_end().value_or(next_cycle_));
    timer_ = loop_.start_timer(std::max(0.0, next - loop_.time().seconds()), false, [this] { act(); });
}

void automatic_presser::act() {
    const double now = loop_.time().seconds();
    acts_ = true;
    release(presses_.take_ended(now + rounding_seconds));
    if (now + rounding_seconds >= next_cycle_) {
        // Cycles for which there was no time are left out.
        next_cycle_ += settings_.seconds_between_cycles;
        if (next_cycle_ < now) next_cycle_ = now + settings_.seconds_between_cycles;
        if (event_.logger().unrecorded() == 0) press_some(now);
        if (settings_.deletes_recent_clips && presses_.below(cycles_to_delete_in) == 0) delete_some();
    }
    acts_ = false;
    wait_for_next();
}

void automatic_presser::press_some(double now) {
    press_engine& engine = event_.logger();
    std::vector<std::string> up;
    for (const auto& button : engine.buttons()) {
        if (!engine.is_down(button->uuid())) up.push_back(button->uuid());
    }
    const auto count = static_cast<std::size_t>(settings_.buttons_each_cycle);
    const press_manner manner{press_cause::presser, false, {}};
    for (const auto& button :
         presses_.begin_cycle(std::move(up), count, now, settings_.seconds_between_cycles)) {
        engine.press(button, event_.playback().collection_time(), manner);
    }
}

void automatic_presser::release(const std::vector<std::string>& buttons) {
    for (const auto& button : buttons) {
        event_.logger().release(button, event_.playback().collection_time(), press_cause::presser);
    }
}

// A clip whose button a hand took over, or into which others may have been merged, is not its own alone.
void automatic_presser::take_fired(const button_fired& fired) {
    const bool is_by_presser = fired.cause == press_cause::presser;
    if (fired.is_down) {
        const bool grows = fired.made == made_kind::nothing && !fired.clip.empty();
        if (is_by_presser && grows) begun_[fired.button] = fired.clip;
        return;
    }
    const auto begun = begun_.extract(fired.button);
    const auto* button = event_.logger().button(fired.button);
    if (!begun || begun.mapped() != fired.clip || !button || button->merge_clips()) return;
    if (!is_by_presser && fired.cause != press_cause::auto_up) return;
    recent_.push_back(fired.clip);
    if (recent_.size() > most_recent) recent_.pop_front();
}

void automatic_presser::take_change(const change_set& change) {
    if (acts_) return;
    if (change.kinds == change_set::everything) recent_.clear();
    std::erase_if(recent_, [&](const std::string& clip) {
        return std::find(change.clips.begin(), change.clips.end(), clip) != change.clips.end();
    });
}

void automatic_presser::delete_some() {
    std::vector<std::string> clips;
    for (std::size_t left = 1 + presses_.below(most_deleted); left > 0 && !recent_.empty(); --left) {
        const auto chosen = recent_.begin() + static_cast<std::ptrdiff_t>(presses_.below(recent_.size()));
        clips.push_back(std::move(*chosen));
        recent_.erase(chosen);
    }
    timeline_document& timeline = event_.timeline();
    auto edit = plan_delete_clips(timeline.timeline(), clips, std::string(), seconds_since_1970());
    // What cannot be put on record stays.
    if (!edit.operations.empty()) (void)timeline.apply(std::move(edit));
}

}  // namespace vistels
