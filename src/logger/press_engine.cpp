// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/press_engine.h"

#include <algorithm>
#include <ctime>
#include <iterator>
#include <memory>
#include <utility>

#include "logger/clip_making.h"
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

}  // namespace

std::string_view press_cause_text(press_cause cause) {
    switch (cause) {
        case press_cause::press:
            return "press";
        case press_cause::link:
            return "link";
        case press_cause::auto_up:
            return "auto up";
        case press_cause::trigger:
            return "trigger";
        case press_cause::tab:
            return "tab";
    }
    return "";
}

std::string_view made_kind_text(made_kind made) {
    switch (made) {
        case made_kind::clip:
            return "clip";
        case made_kind::qualifier:
            return "qualifier";
        case made_kind::attribute:
            return "attribute";
        case made_kind::nothing:
            break;
    }
    return "";
}

press_engine::press_engine(timeline_document& document, const clock& time)
    : document_(document),
      time_(time),
      edited_(document.edited.connect(
          [this](const timeline_edit& edit, const timeline_edit&) { follow_edit(edit); })) {}

// A clip that is missing when its button goes up was taken away on purpose only if an edit says so.
void press_engine::follow_edit(const timeline_edit& edit) {
    const auto is_ours = [this](const std::string& clip) {
        return std::any_of(down_.begin(), down_.end(), [&](const auto& one) { return one.clip == clip; }) ||
               std::any_of(waiting_.begin(), waiting_.end(),
                           [&](const auto& one) { return one.clip == clip; });
    };
    for (const auto& any : edit.operations) {
        if (const auto* removed = std::get_if<operation::remove_clip>(&any)) {
            if (is_ours(removed->clip)) taken_away_.insert(removed->clip);
        } else if (const auto* begun = std::get_if<operation::begin_clip>(&any)) {
            taken_away_.erase(begun->clip->id());  // taking it away was taken back
        }
    }
}

void press_engine::set_buttons(std::vector<button_record> buttons, double at) {
    for (const auto& down : down_buttons()) {
        const bool stays = std::any_of(buttons.begin(), buttons.end(),
                                       [&](const auto& button) { return button->uuid() == down.button; });
        if (!stays) go_up(down.button, at, press_cause::press);
    }
    buttons_ = std::move(buttons);
    buttons_changed.emit();
}

const markup_Button_Item* press_engine::button(std::string_view uuid) const {
    const auto found = std::find_if(buttons_.begin(), buttons_.end(),
                                    [&](const auto& button) { return button->uuid() == uuid; });
    return found == buttons_.end() ? nullptr : &**found;
}

std::vector<std::string> press_engine::buttons_for_key(const key_stroke& key) const {
    std::vector<std::string> uuids;
    for (const auto& button : buttons_) {
        if (button->is_pressed_by(key)) uuids.push_back(button->uuid());
    }
    return uuids;
}

void press_engine::shift_times(double seconds) {
    for (auto& state : down_) {
        state.down.since += seconds;
        if (state.due_at) *state.due_at += seconds;
    }
    for (auto& action : waiting_) {
        action.pressed_at += seconds;
        action.at += seconds;
    }
}

const press_engine::button_state* press_engine::state_of(std::string_view button) const {
    const auto found = std::find_if(down_.begin(), down_.end(),
                                    [&](const button_state& state) { return state.down.button == button; });
    return found == down_.end() ? nullptr : &*found;
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
        if (state.due_at && (!next || *state.due_at < *next)) next = state.due_at;
    }
    return next;
}

void press_engine::set_due(button_state& state, const markup_Button_Item& button, double from) {
    const double duration = std::max(0.0, button.auto_up_duration());
    state.due_at = from + duration;
    state.due_clock_seconds = time_.seconds() + duration;
}

bool press_engine::press(std::string_view uuid, double at) {
    release_due(at);
    const auto* found = button(uuid);
    if (!found || is_down(uuid)) return false;
    const markup_Button_Item pressed = *found;  // an observer may set other buttons
    button_state state{{pressed.uuid(), at, time_.seconds()}, {}, {}, 0};
    if (pressed.is(button_type::clip)) state.clip = new_uuid();
    if (pressed.auto_up() && !pressed.delayed_up()) set_due(state, pressed, at);
    pending_action action{pressed, true, at, at, state.clip, {}};
    if (pressed.is(button_type::qualifier)) action.time_of_day = time_of_day_now();
    down_.push_back(std::move(state));
    if (transport_ && pressed.pause_movies()) transport_->pause();
    fire(action, press_cause::press);
    release_due(at);
    return true;
}

bool press_engine::release(std::string_view uuid, double at) {
    release_due(at);
    const auto found = std::find_if(down_.begin(), down_.end(),
                                    [&](const button_state& state) { return state.down.button == uuid; });
    const auto* released = button(uuid);
    if (found == down_.end() || !released) return false;
    if (released->auto_up()) {
        if (found->due_at) return false;
        set_due(*found, *released, at);
        release_due(at);
        return !is_down(uuid);
    }
    go_up(std::string(uuid), at, press_cause::press);
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

void press_engine::tick(double at) {
    release_due(at);
    const double now = time_.seconds();
    if (!waiting_.empty() && now - last_retry_seconds_ >= retry_interval_seconds) (void)record_waiting();
    if (down_.empty() || now - last_note_seconds_ < note_interval_seconds) return;
    last_note_seconds_ = now;
    const auto noted = document_.note_time(at);
    if (waiting_.empty()) tell_trouble(noted.error());
}

void press_engine::release_due(double at) {
    const double now = time_.seconds();
    for (;;) {
        const button_state* first = nullptr;
        for (const auto& state : down_) {
            if (!state.due_at || (*state.due_at > at && state.due_clock_seconds > now)) continue;
            if (!first || *state.due_at < *first->due_at) first = &state;
        }
        if (!first) return;
        go_up(std::string(first->down.button), *first->due_at, press_cause::auto_up);
    }
}

void press_engine::go_up(const std::string& uuid, double at, press_cause cause) {
    const auto found = std::find_if(down_.begin(), down_.end(),
                                    [&](const button_state& state) { return state.down.button == uuid; });
    const auto* released = button(uuid);
    if (found == down_.end() || !released) return;
    const pending_action action{*released, false, found->down.since, at, found->clip, {}};
    down_.erase(found);
    fire(action, cause);
}

void press_engine::fire(const pending_action& action, press_cause cause) {
    button_fired event;
    event.at = action.at;
    event.button = action.button.uuid();
    event.name = action.button.name();
    event.is_down = action.is_down;
    event.cause = cause;
    const bool makes = action.is_down ? action.button.is(button_type::qualifier) || !action.clip.empty()
                                      : !action.clip.empty();
    if (makes) {
        (void)record_waiting();
        waiting_.push_back(action);
        event.recorded = false;
        if (waiting_.size() == 1) {
            if (const auto done = record_first()) {
                event.recorded = true;
                event.made = done.value().made;
                event.nothing_to_stamp = done.value().nothing_to_stamp;
            }
        }
    }
    fired.emit(event);
}

// Takes the action off the list before its edit is signalled, so that an observer who looks sees it recorded.
result<press_engine::outcome> press_engine::record_first() {
    const pending_action action = waiting_.front();
    waiting_.pop_front();
    last_retry_seconds_ = time_.seconds();
    auto done = record(action);
    if (!done) {
        waiting_.push_front(action);
        tell_trouble(done.error());
    } else if (waiting_.empty()) {
        tell_trouble({});
    }
    return done;
}

result<void> press_engine::record_waiting() {
    while (!waiting_.empty()) {
        if (const auto done = record_first(); !done) return done.error();
    }
    return {};
}

void press_engine::tell_trouble(const failure& reason) {
    if (reason == trouble_) return;
    trouble_ = reason;
    trouble.emit(reason);
}

result<press_engine::outcome> press_engine::record(const pending_action& action) {
    if (!action.is_down) return record_finish(action);
    return action.clip.empty() ? record_stamp(action) : record_begin(action);
}

timeline_edit press_engine::edit_of(const pending_action& action) {
    const auto name = action.button.name();
    return {name.empty() ? std::string(button_type_name(action.button.type_code())) : name,
            action.button.uuid(),
            {}};
}

// The button's row, made by `edit` when it is missing.
row_pointer press_engine::row_for(const pending_action& action, timeline_edit& edit) const {
    const auto& timeline = document_.timeline();
    auto row = row_of_button(timeline, action.button);
    if (row) return row;
    row = std::make_shared<const sxy_ROW>(new_row_of_button(action.button));
    edit.operations.emplace_back(operation::insert_row{timeline.rows().size(), *row});
    return row;
}

result<press_engine::outcome> press_engine::record_begin(const pending_action& action) {
    auto edit = edit_of(action);
    const auto row = row_for(action, edit);
    edit.operations.emplace_back(
        operation::begin_clip{row->uuid(), new_clip_of_button(action.button, action.clip, *row, action.at)});
    if (auto applied = document_.apply(std::move(edit)); !applied) return applied.error();
    // The time noted before may belong to another place: a clip that ends at once must not get it.
    (void)document_.note_time(action.at);
    last_note_seconds_ = time_.seconds();
    return outcome{};
}

result<press_engine::outcome> press_engine::record_finish(const pending_action& action) {
    auto place = document_.timeline().find_clip(action.clip);
    const bool was_taken = taken_away_.contains(action.clip) || (place && !place->is_live);
    if (was_taken) {
        taken_away_.erase(action.clip);
        return outcome{};
    }
    auto edit = edit_of(action);
    const bool is_lost = !place;
    if (is_lost) {
        const auto row = row_for(action, edit);
        place = clip_place{std::make_shared<const sxy_CLIP>(
                               new_clip_of_button(action.button, action.clip, *row, action.pressed_at)),
                           row->uuid()};
    }
    auto plan = plan_finish(document_.timeline(), *place, action.button, {action.pressed_at, action.at},
                            earliest_seconds_);
    std::move(plan.operations.begin(), plan.operations.end(), std::back_inserter(edit.operations));
    const std::string name = edit.name;
    if (auto applied = document_.apply(std::move(edit)); !applied) return applied.error();
    made_clips_.push_back(std::move(plan.clip));
    if (is_lost) made_again.emit(name);
    return outcome{made_kind::clip, false};
}

// The rows of the buttons that take no qualifiers; a row that another button feeds as well is not among them.
std::unordered_set<shared_text> press_engine::rows_without_qualifiers() const {
    std::unordered_set<shared_text> blocked;
    std::unordered_set<shared_text> open;
    for (const auto& button : buttons_) {
        if (!button->is(button_type::clip)) continue;
        const auto row = row_of_button(document_.timeline(), *button);
        if (row) (button->block_qualifiers() ? blocked : open).insert(row->uuid());
    }
    for (const auto& row : open) blocked.erase(row);
    return blocked;
}

bool press_engine::takes_no_qualifiers(const clip_place& place,
                                       const std::unordered_set<shared_text>& rows) const {
    if (place.is_live) {
        for (const auto& state : down_) {
            if (state.clip != place.clip->id()) continue;
            const auto* grown_by = button(state.down.button);
            return grown_by && grown_by->block_qualifiers();
        }
    }
    return rows.contains(place.row);
}

result<press_engine::outcome> press_engine::record_stamp(const pending_action& action) {
    const auto clips = stamped_clips(document_.timeline(), action.at, made_clips_,
                                     [this, rows = rows_without_qualifiers()](const clip_place& place) {
                                         return takes_no_qualifiers(place, rows);
                                     });
    if (clips.empty()) return outcome{made_kind::nothing, true};
    qual_ITEM item;
    item.set_name(shared_text(action.button.name()));
    item.set_category(shared_text(action.button.category()));
    item.set_time(action.at);
    item.set_real_local_time(action.time_of_day);
    item.set_col(action.button.made_colour());
    auto edit = edit_of(action);
    for (const auto& clip : clips) {
        item.set_uuid(new_uuid());
        const auto count = document_.timeline().find_clip(clip)->clip->qualifiers()->size();
        edit.operations.emplace_back(operation::insert_qualifier{clip, count, item});
    }
    if (auto applied = document_.apply(std::move(edit)); !applied) return applied.error();
    return outcome{made_kind::qualifier, false};
}

}  // namespace vistels
