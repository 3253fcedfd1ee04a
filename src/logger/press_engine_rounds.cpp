// SPDX-License-Identifier: GPL-3.0-or-later
//
// What one press or release sets off: changes of state, the links that they follow, and what they make.
#include <algorithm>
#include <cmath>
#include <ctime>
#include <unordered_set>
#include <utility>

#include "logger/press_engine.h"
#include "util/uuid.h"

namespace vistels {

namespace {

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

// The middle, where the button fires there.
std::optional<point> place_on_face(const markup_Button_Item& button, const std::optional<point>& pressed) {
    return button.center_fire() ? std::optional(point{0.5, 0.5}) : pressed;
}

}  // namespace

struct press_engine::round {
    struct change {
        button_fired event;
        button_record button;
        std::optional<std::size_t> action;  // its place among those to be put on record
    };
    press_round made;
    std::vector<change> changes;
    std::vector<bool> fired;  // by the places of the buttons
    std::unordered_set<std::string> blocked;
    bool pauses = false;
    bool changes_looks = false;

    void add(button_fired event, const button_record& button, std::optional<press_action> action) {
        event.button = button->uuid();
        event.name = button->name();
        event.round = made.number;
        event.first_button = made.button;
        std::optional<std::size_t> place;
        if (action) {
            action->round = made.number;
            place = made.actions.size();
            made.actions.push_back(std::move(*action));
        }
        changes.push_back({std::move(event), button, place});
    }
};

press_engine::press_engine(timeline_document& document, const clock& time)
    : document_(document),
      time_(time),
      recorder_(document, time, buttons_,
                {[this](const failure& reason) { trouble.emit(reason); },
                 [this](const std::string& name) { made_again.emit(name); },
                 [this](const std::string& button, const trigger_event_ITEM& trigger) {
                     return plan_trigger(button, trigger);
                 },
                 [this](bool is_recorded) { take_triggers(is_recorded); }}) {}

press_engine::~press_engine() = default;

void press_engine::in_round(const markup_Button_Item& first, const std::function<void()>& act) {
    if (round_) return act();
    round_ = std::make_unique<round>();
    round_->made.number = ++rounds_;
    round_->fired.resize(buttons_.all().size());
    round_->made.button = first.uuid();
    round_->made.name = first.name();
    if (round_->made.name.empty()) round_->made.name = button_type_name(first.type_code());
    act();
    finish_round();
}

// What it made is on record before anybody is told.
void press_engine::finish_round() {
    const auto done = std::exchange(round_, nullptr);
    std::optional<std::vector<press_outcome>> outcomes;
    is_recording_ = true;
    if (!done->made.actions.empty()) outcomes = recorder_.record(std::move(done->made));
    is_recording_ = false;
    if (transport_ && done->pauses) transport_->pause();
    if (done->changes_looks) looks_changed.emit();
    for (auto& [event, button, action] : done->changes) {
        if (action && outcomes) {
            const press_outcome& one = (*outcomes)[*action];
            event.made = one.made;
            event.clip = one.clip;
            event.nothing_to_stamp = one.nothing_to_stamp;
            event.waits = one.waits;
        }
        event.recorded = !action || outcomes;
        tell_of(event, *button);
    }
}

void press_engine::tell_of(const button_fired& event, const markup_Button_Item& button) {
    fired.emit(event);
    // A clip that is not on the timeline while it grows gets its note when it is.
    const bool notes_late = button.note_down() && settings().dont_save_live_clips;
    const bool takes_note = event.is_down ? button.note_down() : button.note_up() || notes_late;
    if (takes_note && !event.clip.empty() && document_.timeline().find_clip(event.clip))
        note_wanted.emit(event.clip, button.uuid());
}

void press_engine::note_state(const std::string& button, bool is_down) {
    const auto place = buttons_.place_of(button);
    if (!place) return;
    graph_.note_state(*place, is_down);
    if (round_) round_->fired[*place] = true;
}

// What a jump of the playhead sets off begins behind the jump.
void press_engine::go_down(const button_record& pressed, double told_at, const press_manner& manner) {
    const double at = jumps_to_.value_or(told_at);
    if (down_.empty()) playhead_ = playhead{reached(at), time_.seconds()};
    const std::string uuid = pressed->uuid();
    const bool is_blocked = round_->blocked.contains(uuid);
    button_state state;
    state.down = {uuid, at, time_.seconds(), manner.latches};
    if (pressed->makes_clips() && !is_blocked) state.clip = new_uuid();
    if (manner.cause != press_cause::press) state.held_by = holder::other;
    if (manner.cause == press_cause::presser) state.held_by = holder::presser;
    if (manner.latches) state.held_by = holder::latch;
    if (state.held_by == holder::hand) state.hands.push_back(manner.hand);
    // What puts down without ever releasing counts as released at once.
    const bool is_timed = pressed->auto_up() && (!pressed->delayed_up() || state.held_by == holder::other);
    if (is_timed && !manner.latches) set_due(state, *pressed, at);
    auto action = is_blocked ? std::nullopt : action_of_press(worn(pressed), state, manner);
    down_.push_back(std::move(state));
    note_state(uuid, true);
    note_trace(*pressed, manner);
    if (pressed->pause_movies() && !is_blocked) round_->pauses = true;
    button_fired event;
    event.at = at;
    event.is_down = true;
    event.cause = manner.cause;
    event.blocked = is_blocked;
    round_->add(std::move(event), pressed, std::move(action));
    follow_links(*pressed, true, told_at);
    press_beside(*pressed, told_at, true);
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

void press_engine::go_up(const std::string& uuid, double at, press_cause cause, bool drops) {
    const auto* found = buttons_.find(uuid);
    if (!found || !is_down(uuid)) return;
    const button_record released = *found;
    in_round(*released, [&] { go_up_in_round(released, at, cause, drops); });
}

void press_engine::go_up_in_round(const button_record& released, double at, press_cause cause, bool drops) {
    const std::string uuid = released->uuid();
    const auto place = std::find_if(down_.begin(), down_.end(),
                                    [&](const button_state& state) { return state.down.button == uuid; });
    const button_state state = *place;
    down_.erase(place);
    note_state(uuid, false);
    button_fired event;
    event.at = at;
    event.cause = cause;
    event.dropped = drops;
    event.blocked = round_->blocked.contains(uuid);
    std::optional<press_action> action;
    if (!state.clip.empty()) {
        action.emplace();
        action->what = drops || event.blocked ? press_action::kind::drop : press_action::kind::finish;
        action->button = worn(released);
        action->at = at;
        action->clip = state.clip;
        action->held = {state.down.since, at, state.jumped_back};
    }
    round_->add(std::move(event), released, std::move(action));
    if (drops) return;
    follow_links(*released, false, at);
    press_beside(*released, at, false);
}

// As links have coloured it: what it makes has that colour.
button_record press_engine::worn(const button_record& button) const {
    const auto* look = looks_.of(button->uuid());
    if (!look || (!look->button_colour && !look->mark_colour)) return button;
    return changed_button(button, [look](markup_Button_Item& one) {
        auto display = one.display();
        if (look->button_colour) display.button_colour = look->button_colour;
        if (look->mark_colour) display.mask_colour = look->mark_colour;
        one.set_display(std::move(display));
    });
}

void press_engine::note_trace(const markup_Button_Item& pressed, const press_manner& manner) {
    const auto field = pressed.field();
    const auto place = place_on_face(pressed, manner.place);
    if (!field.Cartesian || field.Cartesian_Traces <= 0 || !place) return;
    looks_.add_trace(pressed.uuid(), *place, static_cast<std::size_t>(field.Cartesian_Traces));
    round_->changes_looks = true;
}

void press_engine::follow_links(const markup_Button_Item& button, bool is_down, double at) {
    const auto place = buttons_.place_of(button.uuid());
    if (!place) return;
    for (const link_graph::link& link : graph_.links_of(*place)) {
        if (link.kind->acts_on_down() != is_down || !graph_.holds(link)) continue;
        // In what one press sets off each button changes once.
        if (link.kind->sets_state() && round_->fired[link.target]) continue;
        const button_record target = buttons_.all()[link.target];
        link_fired.emit(button.uuid(), target->uuid(), *link.kind);
        follow_link(link, target, at);
    }
}

void press_engine::follow_link(const link_graph::link& link, const button_record& target, double at) {
    const std::string uuid = target->uuid();
    const bool is_down_now = graph_.is_down(link.target);
    switch (link.kind->effect) {
        case link_effect::set_up:
        case link_effect::set_down:
        case link_effect::toggle:
            if (link.kind->effect == (is_down_now ? link_effect::set_down : link_effect::set_up)) return;
            if (!is_down_now && !puts_down_) return;
            if (!is_down_now) return go_down(target, at, {press_cause::link, false, std::nullopt});
            return go_up_in_round(target, at, press_cause::link, false);
        case link_effect::block:
            round_->blocked.insert(uuid);
            return;
        case link_effect::center_on:
            return center_wanted.emit(uuid);
        case link_effect::bring_to_front:
            looks_.bring_to_front(uuid);
            break;
        case link_effect::send_to_back:
            looks_.send_to_back(uuid);
            break;
        case link_effect::set_button_colour:
            if (link.colour_to_set) looks_.set_button_colour(uuid, *link.colour_to_set);
            break;
        case link_effect::set_mark_colour:
            if (link.colour_to_set) looks_.set_mark_colour(uuid, *link.colour_to_set);
            break;
        case link_effect::clear_traces:
            looks_.clear_traces(uuid);
            break;
    }
    round_->changes_looks = true;
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
        if (round_->fired[*buttons_.place_of(uuid)] || this->is_down(uuid)) continue;
        go_down(pressed, at, {press_cause::link, false, std::nullopt});
        if (this->is_down(uuid)) go_up_in_round(pressed, jumps_to_.value_or(at), press_cause::link, false);
    }
}

// Where the code window is on record the trigger is part of the press's edit.
std::optional<document_part> press_engine::plan_trigger(const std::string& uuid,
                                                        const trigger_event_ITEM& trigger) {
    const auto earlier = std::find_if(planned_.begin(), planned_.end(),
                                      [&](const auto& one) { return one.button->uuid() == uuid; });
    const auto* target = earlier != planned_.end() ? &earlier->button : buttons_.find(uuid);
    if (!target) return std::nullopt;
    const button_record changed = changed_button(*target, [&](markup_Button_Item& button) {
        auto all = button.triggers();
        all.push_back(trigger);
        button.set_triggers(std::move(all));
    });
    auto part = plan_button_ ? plan_button_(changed) : std::nullopt;
    if (earlier != planned_.end()) planned_.erase(earlier);
    planned_.push_back({changed, part.has_value()});
    return part;
}

void press_engine::take_triggers(bool is_recorded) {
    const auto planned = std::exchange(planned_, {});
    for (const auto& one : planned) {
        if (!is_recorded || one.is_on_record) continue;
        buttons_.replace(one.button);
        triggers_.set_buttons(buttons_.all());
        trigger_added.emit(one.button->uuid());
    }
}

void press_engine::follow_playing(double at, bool runs_forwards) {
    if (drag_) {
        if (runs_forwards == triggers_.is_running()) return;
        let_go_of_playhead();
    }
    if (runs_forwards || triggers_.is_before(at)) pass_triggers(at);
    if (!runs_forwards) {
        triggers_.stop();
    } else if (!triggers_.is_running()) {
        triggers_.begin(at);
    }
}

// Where the timeline can only be read they would be on record much later.
bool press_engine::follows_triggers() const {
    return !settings().disable_triggers && !document_.is_read_only();
}

// Each at its own time, and auto-ups that are due before it first.
void press_engine::pass_triggers(double at) {
    for (const auto& one : triggers_.pass(at)) {
        if (!follows_triggers()) continue;
        release_due(one.at);
        const auto* found = buttons_.find(one.button);
        if (!found || is_down(one.button) == one.goes_down) continue;
        const button_record button = *found;
        if (one.goes_down) {
            in_round(*button, [&] { go_down(button, one.at, {press_cause::trigger, false, std::nullopt}); });
        } else {
            go_up(one.button, one.at, press_cause::trigger);
        }
    }
}

}  // namespace vistels
