// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/press_engine.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "util/uuid.h"

namespace vistels {

namespace {

// Sums of times are not exact.
constexpr double rounding_seconds = 1e-6;
constexpr double infinity = std::numeric_limits<double>::infinity();

}  // namespace

void press_engine::set_buttons(std::vector<button_record> buttons, double at) {
    if (!recorder_.is_recording()) come_to(at);
    button_set coming(std::move(buttons));
    puts_down_ = false;
    for (const auto& down : down_buttons()) {
        if (!coming.find(down.button)) go_up(down.button, at, press_cause::press);
    }
    puts_down_ = true;
    buttons_ = std::move(coming);
    graph_ = link_graph(buttons_.all());
    for (const auto& down : down_buttons()) note_state(down.button, true);
    triggers_.set_buttons(buttons_.all());
    buttons_changed.emit();
}

const markup_Button_Item* press_engine::button(std::string_view uuid) const {
    const auto* found = buttons_.find(uuid);
    return found ? &**found : nullptr;
}

std::vector<std::string> press_engine::buttons_for_key(const key_stroke& key) const {
    std::vector<std::string> uuids;
    for (const auto& button : buttons_.all()) {
        if (button->is_pressed_by(key)) uuids.push_back(button->uuid());
    }
    return uuids;
}

void press_engine::shift_times(double seconds) {
    for (auto& state : down_) {
        state.down.since += seconds;
        state.due_place += seconds;
        if (state.due_at) *state.due_at += seconds;
    }
    if (playhead_) playhead_->at += seconds;
    if (drag_) drag_ = {drag_->from + seconds, drag_->to + seconds};
    triggers_.shift(seconds);
    recorder_.shift_times(seconds);
}

const press_engine::button_state* press_engine::state_of(std::string_view button) const {
    const auto found = std::find_if(down_.begin(), down_.end(),
                                    [&](const button_state& state) { return state.down.button == button; });
    return found == down_.end() ? nullptr : &*found;
}

press_engine::button_state* press_engine::state_of(std::string_view button) {
    return const_cast<button_state*>(std::as_const(*this).state_of(button));
}

std::optional<down_button> press_engine::down_since(std::string_view button) const {
    const auto* state = state_of(button);
    return state ? std::optional(state->down) : std::nullopt;
}

std::vector<down_button> press_engine::down_buttons() const {
    std::vector<down_button> all;
    for (const auto& state : down_) all.push_back(state.down);
    return all;
}

std::optional<double> press_engine::next_due() const {
    std::optional<double> next = follows_triggers() ? triggers_.next() : std::nullopt;
    for (const auto& state : down_) {
        if (state.due_at && (!next || state.due_place < *next)) next = state.due_place;
    }
    return next;
}

void press_engine::set_due(button_state& state, const markup_Button_Item& button, double from) {
    const double duration = std::max(0.0, button.auto_up_duration());
    state.due_at = from + duration;
    state.due_place = reached(from) + duration;
}

// What is told of a moment before a jump may come after the jump.
double press_engine::reached(double at) const {
    return transport_ ? std::min(at, transport_->collection_time()) : at;
}

// What the playhead brings about on its way there.
void press_engine::come_to(double at) {
    let_go_of_playhead();
    const double now = reached(at);
    pass_triggers(now);
    release_due(now);
}

bool press_engine::press(std::string_view uuid, double at, const press_manner& manner) {
    come_to(at);
    const auto* found = buttons_.find(uuid);
    if (!found) return false;
    if (auto* state = state_of(uuid)) return take_over(*state, at, manner);
    const button_record pressed = *found;  // an observer may set other buttons
    in_round(*pressed, [&] { go_down(pressed, at, manner); });
    release_due(reached(at));
    return true;
}

// A press of a button that is down.
bool press_engine::take_over(button_state& state, double at, const press_manner& manner) {
    if (state.held_by == holder::latch) {
        go_up(std::string(state.down.button), at, manner.cause);
        return true;
    }
    if (manner.cause != press_cause::press) return false;
    // What its timer alone held is the hand's from now on.
    if (state.hands.empty() && state.due_at) {
        state.due_at.reset();
        state.is_taken_over = true;
    }
    state.held_by = manner.latches ? holder::latch : holder::hand;
    state.down.is_latched = manner.latches;
    if (!manner.latches &&
        std::find(state.hands.begin(), state.hands.end(), manner.hand) == state.hands.end())
        state.hands.push_back(manner.hand);
    return false;
}

bool press_engine::release(std::string_view uuid, double at, press_cause cause, int hand) {
    come_to(at);
    auto* state = state_of(uuid);
    const auto* released = button(uuid);
    if (!state || !released) return false;
    const bool is_by_hand = cause == press_cause::press;
    if (is_by_hand || cause == press_cause::presser) {
        if (state->held_by != (is_by_hand ? holder::hand : holder::presser)) return false;
        if (is_by_hand && (std::erase(state->hands, hand) == 0 || !state->hands.empty())) return false;
        if (released->auto_up() && (!state->is_taken_over || released->delayed_up())) {
            if (state->due_at) return false;
            set_due(*state, *released, at);
            release_due(reached(at));
            return !is_down(uuid);
        }
    }
    go_up(std::string(uuid), at, cause);
    return true;
}

void press_engine::release_all(double at) {
    come_to(at);
    puts_down_ = false;
    for (const auto& down : down_buttons()) go_up(down.button, at, press_cause::press);
    puts_down_ = true;
}

void press_engine::tab(double at) {
    come_to(at);
    for (const auto& down : down_buttons()) {
        const auto* released = button(down.button);
        if (released && !released->ignore_tab()) go_up(down.button, at, press_cause::tab);
    }
}

bool press_engine::escape(double at) {
    come_to(at);
    if (recorder_.has_waiting_attributes()) {
        give_up_attributes();
        return true;
    }
    const auto last = std::find_if(down_.rbegin(), down_.rend(),
                                   [](const button_state& state) { return !state.clip.empty(); });
    if (last == down_.rend()) return false;
    go_up(std::string(last->down.button), at, press_cause::press, true);
    return true;
}

void press_engine::playhead_dragged(double from, double to) {
    if (!drag_) {
        pass_triggers(from);
        release_due(from);
        drag_ = {from, to};
    }
    drag_->to = to;
}

void press_engine::let_go_of_playhead() {
    if (drag_) playhead_jumped(drag_->from, drag_->to);
}

void press_engine::playhead_jumped(double from, double to, bool is_loop_turn) {
    if (drag_) from = std::exchange(drag_, std::nullopt)->from;
    pass_triggers(from);
    release_due(from);
    triggers_.jump(to);
    for (auto& state : down_) state.due_place += to - from;
    if (playhead_) playhead_->at = to;
    jumps_to_ = to;
    for (const button_state& was : std::vector(down_)) {
        auto* state = state_of(was.down.button);
        const auto* held = button(was.down.button);
        // One that a link put down again grows from where the playhead is now.
        if (!state || !held || state->clip.empty() || state->clip != was.clip) continue;
        const double start = span_of_press(*held, {was.down.since, was.down.since}, -infinity).span.start;
        const bool is_out = is_loop_turn || to < start || to > from;
        if (is_out) {
            go_up(was.down.button, state->due_at.value_or(from),
                  state->due_at ? press_cause::auto_up : press_cause::press);
        } else {
            state->jumped_back = true;
        }
    }
    jumps_to_.reset();
    const bool attributes_waited = recorder_.has_waiting_attributes();
    press_round jump;
    jump.actions.emplace_back().what = press_action::kind::jump;
    (void)recorder_.record(std::move(jump));
    if (attributes_waited) attributes_given_up.emit();
}

void press_engine::give_up_attributes() {
    press_round forgets;
    forgets.actions.emplace_back().what = press_action::kind::forget_attributes;
    (void)recorder_.record(std::move(forgets));
    attributes_given_up.emit();
}

void press_engine::tick(double at) {
    if (drag_) return recorder_.tick(drag_->from, !down_.empty());
    follow_playhead(at);
    come_to(at);
    recorder_.tick(at, !down_.empty());
}

// Where the collection's time did not run towards the moments that are due, the time that passed brings them
// nearer all the same.
void press_engine::follow_playhead(double at) {
    const double now = time_.seconds();
    if (playhead_ && at <= playhead_->at) {
        const double passed = now - playhead_->clock_seconds;
        for (auto& state : down_) state.due_place += at - playhead_->at - passed;
    }
    playhead_ = playhead{at, now};
}

void press_engine::release_due(double at) {
    for (;;) {
        const button_state* first = nullptr;
        for (const auto& state : down_) {
            if (!state.due_at || state.due_place > at + rounding_seconds) continue;
            if (!first || *state.due_at < *first->due_at) first = &state;
        }
        if (!first) return;
        go_up(std::string(first->down.button), *first->due_at, press_cause::auto_up);
    }
}

}  // namespace vistels
