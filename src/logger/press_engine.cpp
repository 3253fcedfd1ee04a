// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/press_engine.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <limits>
#include <utility>

#include "util/uuid.h"

namespace vistels {

namespace {

// Sums of times are not exact.
constexpr double rounding_seconds = 1e-6;
constexpr double infinity = std::numeric_limits<double>::infinity();

std::string time_of_day_now() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    char text[16] = "";
    if (!::localtime_r(&now, &local) || std::strftime(text, sizeof text, "%H:%M:%S", &local) == 0) return {};
    return text;
}

double on_scale(double share, double from, double to, double step) {
    const double place = from + share * (to - from);
    return step > 0 ? from + std::round((place - from) / step) * step : place;
}

// Where on the button's field the press is, by its scales.
std::optional<point> place_on_field(const markup_Button_Item& button, const std::optional<point>& pressed) {
    const auto field = button.field();
    if (!field.Cartesian) return std::nullopt;
    auto place = pressed;
    if (button.center_fire()) place = point{0.5, 0.5};
    if (!place || !field.scale_start_X) return place;
    const point scaled{on_scale(place->x, *field.scale_start_X, field.scale_end_X, field.scale_step_X),
                       on_scale(place->y, field.scale_start_Y, field.scale_end_Y, field.scale_step_Y)};
    const bool is_told = std::isfinite(scaled.x) && std::isfinite(scaled.y);
    return is_told ? std::optional(scaled) : std::nullopt;
}

}  // namespace

press_engine::press_engine(timeline_document& document, const clock& time)
    : document_(document),
      time_(time),
      recorder_(document, time, buttons_,
                {[this](const failure& reason) { trouble.emit(reason); },
                 [this](const std::string& name) { made_again.emit(name); },
                 [this](const std::string& button, const trigger_event_ITEM& trigger,
                        const markup_Button_Item& pressed) { add_trigger(button, trigger, pressed); }}) {}

void press_engine::set_buttons(std::vector<button_record> buttons, double at) {
    button_set coming(std::move(buttons));
    for (const auto& down : down_buttons()) {
        if (!coming.find(down.button)) go_up(down.button, at, press_cause::press);
    }
    buttons_ = std::move(coming);
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

void press_engine::add_trigger(const std::string& uuid, const trigger_event_ITEM& trigger,
                               const markup_Button_Item& pressed) {
    const auto* target = buttons_.find(uuid);
    if (!target) return;
    buttons_.replace(changed_button(*target, [&](markup_Button_Item& button) {
        auto all = button.triggers();
        all.push_back(trigger);
        button.set_triggers(std::move(all));
    }));
    trigger_added.emit(uuid, trigger, pressed);
}

void press_engine::shift_times(double seconds) {
    for (auto& state : down_) {
        state.down.since += seconds;
        state.due_place += seconds;
        if (state.due_at) *state.due_at += seconds;
    }
    if (playhead_) playhead_->at += seconds;
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

std::optional<double> press_engine::next_auto_up() const {
    std::optional<double> next;
    for (const auto& state : down_) {
        if (state.due_at && (!next || state.due_place < *next)) next = state.due_place;
    }
    return next;
}

void press_engine::set_due(button_state& state, const markup_Button_Item& button, double from) {
    state.due_place = from + std::max(0.0, button.auto_up_duration());
    state.due_at = state.due_place;
}

bool press_engine::press(std::string_view uuid, double at, const press_manner& manner) {
    release_due(at);
    const auto* found = buttons_.find(uuid);
    if (!found) return false;
    if (auto* state = state_of(uuid)) return take_over(*state, at, manner);
    const button_record pressed = *found;  // an observer may set other buttons
    go_down(pressed, at, manner);
    release_due(at);
    return true;
}

// A press of a button that is down.
bool press_engine::take_over(button_state& state, double at, const press_manner& manner) {
    if (state.held_by == holder::latch) {
        go_up(std::string(state.down.button), at, manner.cause);
        return true;
    }
    if (manner.cause == press_cause::press) state.held_by = manner.latches ? holder::latch : holder::hand;
    state.down.is_latched = state.held_by == holder::latch;
    return false;
}

void press_engine::go_down(const button_record& pressed, double at, const press_manner& manner) {
    if (down_.empty()) playhead_ = playhead{at, time_.seconds()};
    button_state state;
    state.down = {pressed->uuid(), at, time_.seconds(), manner.latches};
    if (pressed->makes_clips()) state.clip = new_uuid();
    if (manner.cause != press_cause::press) state.held_by = holder::other;
    if (manner.latches) state.held_by = holder::latch;
    if (pressed->auto_up() && !pressed->delayed_up()) set_due(state, *pressed, at);
    auto action = action_of_press(pressed, state, manner);
    down_.push_back(std::move(state));
    if (transport_ && pressed->pause_movies()) transport_->pause();
    button_fired event;
    event.at = at;
    event.is_down = true;
    event.cause = manner.cause;
    fire(std::move(event), *pressed, std::move(action));
}

std::optional<press_action> press_engine::action_of_press(const button_record& pressed,
                                                          const button_state& state,
                                                          const press_manner& manner) const {
    press_action action;
    action.button = pressed;
    action.at = state.down.since;
    action.clip = state.clip;
    action.place = place_on_field(*pressed, manner.place);
    if (pressed->renamer()) {
        action.what = press_action::kind::rename;
        if (selected_) action.selected = selected_();
    } else if (!state.clip.empty()) {
        action.what = press_action::kind::begin;
    } else if (pressed->is(button_type::qualifier)) {
        action.what = press_action::kind::stamp;
        action.time_of_day = time_of_day_now();
    } else if (pressed->is(button_type::attribute)) {
        action.what = press_action::kind::attribute;
    } else if (pressed->is(button_type::trigger)) {
        action.what = press_action::kind::trigger;
    } else {
        return std::nullopt;
    }
    return action;
}

bool press_engine::release(std::string_view uuid, double at, press_cause cause) {
    release_due(at);
    auto* state = state_of(uuid);
    const auto* released = button(uuid);
    if (!state || !released) return false;
    if (cause == press_cause::press) {
        if (state->held_by != holder::hand) return false;
        if (released->auto_up()) {
            if (state->due_at) return false;
            set_due(*state, *released, at);
            release_due(at);
            return !is_down(uuid);
        }
    }
    go_up(std::string(uuid), at, cause);
    return true;
}

void press_engine::release_all(double at) {
    release_due(at);
    for (const auto& down : down_buttons()) go_up(down.button, at, press_cause::press);
}

void press_engine::tab(double at) {
    release_due(at);
    for (const auto& down : down_buttons()) {
        const auto* released = button(down.button);
        if (released && !released->ignore_tab()) go_up(down.button, at, press_cause::tab);
    }
}

bool press_engine::escape(double at) {
    release_due(at);
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

void press_engine::playhead_jumped(double from, double to, bool is_loop_turn) {
    release_due(from);
    for (const auto& down : down_buttons()) {
        auto* state = state_of(down.button);
        const auto* held = button(down.button);
        if (!state || !held || state->clip.empty()) continue;
        const double start = span_of_press(*held, {down.since, down.since}, -infinity).span.start;
        const bool is_out = is_loop_turn || to < start || to > from;
        if (is_out) {
            go_up(down.button, state->due_at.value_or(from),
                  state->due_at ? press_cause::auto_up : press_cause::press);
        } else {
            state->jumped_back = true;
        }
    }
    for (auto& state : down_) state.due_place += to - from;
    if (playhead_) playhead_->at = to;
    const bool attributes_waited = recorder_.has_waiting_attributes();
    press_action jump;
    jump.what = press_action::kind::jump;
    (void)recorder_.record(std::move(jump));
    if (attributes_waited) attributes_given_up.emit();
}

void press_engine::give_up_attributes() {
    press_action forget;
    forget.what = press_action::kind::forget_attributes;
    (void)recorder_.record(std::move(forget));
    attributes_given_up.emit();
}

void press_engine::tick(double at) {
    follow_playhead(at);
    release_due(at);
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

void press_engine::go_up(const std::string& uuid, double at, press_cause cause, bool drops) {
    const auto* found = buttons_.find(uuid);
    const auto place = std::find_if(down_.begin(), down_.end(),
                                    [&](const button_state& state) { return state.down.button == uuid; });
    if (!found || place == down_.end()) return;
    const button_record released = *found;
    const button_state state = *place;
    down_.erase(place);
    button_fired event;
    event.at = at;
    event.cause = cause;
    event.dropped = drops;
    if (state.clip.empty()) return fire(std::move(event), *released, std::nullopt);
    press_action action;
    action.what = drops ? press_action::kind::drop : press_action::kind::finish;
    action.button = released;
    action.at = at;
    action.clip = state.clip;
    action.held = {state.down.since, at, state.jumped_back};
    fire(std::move(event), *released, std::move(action));
}

// Records what the change of state makes, tells it, and presses the buttons beside.
void press_engine::fire(button_fired event, const markup_Button_Item& button,
                        std::optional<press_action> action) {
    const bool is_outermost = pressed_.empty();
    event.button = button.uuid();
    event.name = button.name();
    if (action) {
        const auto done = recorder_.record(std::move(*action));
        event.recorded = done.has_value();
        if (done) {
            event.made = done->made;
            event.clip = done->clip;
            event.nothing_to_stamp = done->nothing_to_stamp;
            event.waits = done->waits;
        }
    }
    const bool is_down = event.is_down;
    const double at = event.at;
    const std::string clip = event.clip;
    const bool drops = event.dropped;
    pressed_.push_back(event.button);
    fired.emit(event);
    // A clip that is not on the timeline while it grows gets its note when it is.
    const bool notes_late = button.note_down() && settings().dont_save_live_clips;
    const bool takes_note = is_down ? button.note_down() : button.note_up() || notes_late;
    if (takes_note && !clip.empty() && document_.timeline().find_clip(clip))
        note_wanted.emit(clip, button.uuid());
    if (!drops) press_beside(button, at, is_down);
    if (is_outermost) pressed_.clear();
}

void press_engine::press_beside(const markup_Button_Item& button, double at, bool is_down) {
    const bool last = is_down ? button.last_down() : button.last_up();
    const bool next = is_down ? button.next_down() : button.next_up();
    for (const int direction : {-1, 1}) {
        if (!(direction < 0 ? last : next)) continue;
        const auto* beside = buttons_.beside(button, direction);
        if (!beside) continue;
        const button_record pressed = *beside;
        const std::string uuid = pressed->uuid();
        const bool was_pressed = std::find(pressed_.begin(), pressed_.end(), uuid) != pressed_.end();
        if (was_pressed || this->is_down(uuid)) continue;
        go_down(pressed, at, {press_cause::link, false, std::nullopt});
        go_up(uuid, at, press_cause::link);
    }
}

}  // namespace vistels
