// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/press_recorder.h"

#include <algorithm>
#include <iterator>

#include "logger/renaming.h"

namespace vistels {

namespace {

// A press is told after the tick of its moment, but not later than that.
constexpr double latest_press_seconds = 10;

}  // namespace

press_recorder::press_recorder(timeline_document& document, const clock& time, const button_set& buttons,
                               observer told)
    : document_(document),
      time_(time),
      buttons_(buttons),
      observer_(std::move(told)),
      edited_(document.edited.connect(
          [this](const timeline_edit& edit, const timeline_edit&) { follow_edit(edit); })) {}

// A clip that is missing when its button goes up was taken away on purpose only if an edit says so.
void press_recorder::follow_edit(const timeline_edit& edit) {
    for (const auto& any : edit.operations) {
        if (const auto* removed = std::get_if<operation::remove_clip>(&any)) {
            if (growing_.contains(removed->clip)) taken_away_.insert(removed->clip);
        } else if (const auto* begun = std::get_if<operation::begin_clip>(&any)) {
            taken_away_.erase(begun->clip->id());  // taking it away was taken back
        }
    }
}

// What grows in memory alone changes as a round goes on; a copy of it does not.
struct press_recorder::state {
    std::map<std::string, growing_clip> growing;
    std::unordered_set<std::string> taken_away;
    copied_on_change<std::vector<running_clip>> running;
    copied_on_change<std::vector<stamped_qualifier>> last_stamped;
    std::vector<clip_attribute_ITEM> waiting_attributes;
};

press_recorder::state press_recorder::keep_state() {
    state kept{growing_, taken_away_, running_, last_stamped_, waiting_attributes_};
    for (auto& [clip, growing] : kept.growing) {
        if (growing.unsaved) growing.unsaved = std::make_shared<sxy_CLIP>(*growing.unsaved);
    }
    coded_.begin_trial();
    return kept;
}

void press_recorder::put_back(state kept) {
    growing_ = std::move(kept.growing);
    taken_away_ = std::move(kept.taken_away);
    running_ = std::move(kept.running);
    last_stamped_ = std::move(kept.last_stamped);
    waiting_attributes_ = std::move(kept.waiting_attributes);
    coded_.take_back_trial();
}

std::optional<std::vector<press_outcome>> press_recorder::record(press_round round) {
    (void)record_waiting();
    waiting_.push_back(std::move(round));
    if (waiting_.size() > 1) return std::nullopt;
    auto done = record_first();
    return done ? std::optional(std::move(done).value()) : std::nullopt;
}

// Takes the round off the list before its edit is signalled, so that an observer who looks sees it recorded.
result<std::vector<press_outcome>> press_recorder::record_first() {
    const press_round round = std::move(waiting_.front());
    waiting_.pop_front();
    last_retry_seconds_ = time_.seconds();
    state before = keep_state();
    std::vector<press_outcome> outcomes;
    plans_triggers_ = false;
    begun_at_.reset();
    is_recording_ = true;
    const auto made = document_.apply_jointly(round.name, round.button, [&]() -> result<void> {
        for (const press_action& action : round.actions) {
            with_edit_.clear();
            auto one = make(action);
            if (!one) return one.error();
            outcomes.push_back(std::move(one).value());
        }
        return {};
    });
    is_recording_ = false;
    if (plans_triggers_) observer_.triggers_planned(made.ok());
    if (!made) {
        put_back(std::move(before));
        lost_.clear();
        waiting_.push_front(round);
        tell_trouble(made.error());
        return made.error();
    }
    coded_.end_trial();
    // The time noted before may belong to another place: a clip that ends at once must not get it.
    if (begun_at_) {
        (void)document_.note_time(*begun_at_);
        last_note_seconds_ = time_.seconds();
    }
    if (waiting_.empty()) tell_trouble({});
    for (const auto& name : std::exchange(lost_, {})) observer_.made_again(name);
    return outcomes;
}

result<void> press_recorder::record_waiting() {
    while (!waiting_.empty()) {
        if (const auto done = record_first(); !done) return done.error();
    }
    return {};
}

void press_recorder::tick(double at, bool anything_down) {
    const double now = time_.seconds();
    if (!waiting_.empty() && now - last_retry_seconds_ >= retry_interval_seconds) (void)record_waiting();
    const auto is_over = [&](const running_clip& one) { return one.until < at - latest_press_seconds; };
    if (waiting_.empty() && std::any_of(running_->begin(), running_->end(), is_over))
        std::erase_if(running_.change(), is_over);
    if (!anything_down || now - last_note_seconds_ < note_interval_seconds) return;
    last_note_seconds_ = now;
    const auto noted = document_.note_time(at);
    if (waiting_.empty()) tell_trouble(noted.error());
}

void press_recorder::tell_trouble(const failure& reason) {
    if (reason == trouble_) return;
    trouble_ = reason;
    observer_.trouble(reason);
}

bool press_recorder::has_waiting_attributes() const {
    bool has_some = !waiting_attributes_.empty();
    for (const auto& round : waiting_) {
        for (const auto& action : round.actions) {
            if (action.what == kind::attribute) {
                has_some = has_some || action.button->stage() != attribute_stage::last;
            } else if (action.what == kind::stamp || action.what == kind::forget_attributes ||
                       action.what == kind::jump) {
                has_some = false;
            }
        }
    }
    return has_some;
}

void press_recorder::shift_times(double seconds) {
    for (auto& round : waiting_) {
        for (auto& action : round.actions) action.shift(seconds);
    }
    for (auto& one : running_.change()) {
        one.from += seconds;
        one.until += seconds;
    }
    for (auto& attribute : waiting_attributes_) {
        if (attribute.attribute_time) *attribute.attribute_time += seconds;
    }
    for (auto& [clip, growing] : growing_) {
        if (!growing.unsaved) continue;
        growing.unsaved->set_secs_start(growing.unsaved->secs_start() + seconds);
        growing.unsaved->set_secs_end(growing.unsaved->secs_end() + seconds);
    }
    coded_.shift(seconds);
}

std::vector<clip_place> press_recorder::unsaved_growing() const {
    std::vector<clip_place> clips;
    for (const auto& [uuid, growing] : growing_) {
        if (!growing.unsaved) continue;
        auto clip = std::make_shared<const sxy_CLIP>(*growing.unsaved);
        const auto row = clip->row_uuid_in_clip();
        clips.push_back({std::move(clip), row, true});
    }
    return clips;
}

const sxy_CLIP* press_recorder::unsaved(const std::string& clip) const {
    const auto found = growing_.find(clip);
    return found == growing_.end() ? nullptr : found->second.unsaved.get();
}

result<press_outcome> press_recorder::make(const press_action& action) {
    switch (action.what) {
        case kind::begin:
            return begin(action);
        case kind::finish:
            return finish(action);
        case kind::drop:
            return drop(action);
        case kind::stamp:
            return stamp(action);
        case kind::attribute:
            return add_attribute(action);
        case kind::trigger:
            return add_trigger(action);
        case kind::rename:
            return rename(action);
        case kind::jump:
            running_.set({});
            [[fallthrough]];
        case kind::forget_attributes:
            waiting_attributes_.clear();
            break;
    }
    return press_outcome{};
}

timeline_edit press_recorder::edit_of(const press_action& action) const {
    const auto name = action.button->name();
    return {name.empty() ? std::string(button_type_name(action.button->type_code())) : name,
            action.button->uuid(),
            {}};
}

// Also what the edit brings along for clips that are in memory alone; an edit of nothing is none.
result<void> press_recorder::apply(timeline_edit edit) {
    const auto brought_along = std::exchange(with_edit_, {});
    if (!edit.operations.empty() || !edit.others.empty()) {
        if (auto applied = document_.apply(std::move(edit)); !applied) return applied;
    }
    for (const auto& change : brought_along) change();
    return {};
}

// The button's row, made by `edit` when it is missing.
row_pointer press_recorder::row_for(const press_action& action, timeline_edit& edit) const {
    const auto& timeline = document_.timeline();
    const markup_Button_Item& button = *action.button;
    if (auto row = buttons_.row_of(timeline, button)) {
        if (button.is(button_type::timer_clip) && !row->is_timer_row()) {
            operation::change_row change{row->uuid(), {}, {}};
            change.set.set("timer_row", true);
            edit.operations.emplace_back(std::move(change));
        }
        return row;
    }
    const auto row = std::make_shared<const sxy_ROW>(new_row_of_button(buttons_.row_owner(button)));
    edit.operations.emplace_back(operation::insert_row{timeline.rows().size(), *row});
    return row;
}

result<press_outcome> press_recorder::begin(const press_action& action) {
    const press_outcome begun{made_kind::nothing, action.clip, false, false};
    coded_.note_button(action.clip, action.button->uuid());
    auto edit = edit_of(action);
    const auto row = row_for(action, edit);
    const auto clip = new_clip_of_button(*action.button, action.clip, *row, action.at);
    if (settings_.dont_save_live_clips) {
        growing_[action.clip].unsaved = std::make_shared<sxy_CLIP>(clip);
        return begun;
    }
    const bool makes_row = !document_.timeline().row_index(row->uuid());
    edit.operations.emplace_back(operation::begin_clip{row->uuid(), clip});
    if (auto applied = apply(std::move(edit)); !applied) return applied.error();
    growing_[action.clip] = {makes_row ? std::optional(row->uuid()) : std::nullopt, nullptr};
    begun_at_ = action.at;
    return begun;
}

// Where the clip is that ends now; nothing when it was taken away. One that is not on the timeline gets its
// row by `edit`.
std::optional<clip_place> press_recorder::place_of_growing(const press_action& action, timeline_edit& edit,
                                                           bool& is_lost) {
    auto place = document_.timeline().find_clip(action.clip);
    if (taken_away_.contains(action.clip) || (place && !place->is_live)) return std::nullopt;
    if (place) return place;
    const auto row = row_for(action, edit);
    const auto* kept = unsaved(action.clip);
    is_lost = !kept;
    sxy_CLIP clip = kept ? *kept : new_clip_of_button(*action.button, action.clip, *row, action.held.pressed);
    clip.set_row_uuid_in_clip(row->uuid());
    clip.set_row_category_in_clip(shared_text(row->category()));
    return clip_place{std::make_shared<const sxy_CLIP>(std::move(clip)), row->uuid()};
}

result<press_outcome> press_recorder::finish(const press_action& action) {
    auto edit = edit_of(action);
    bool is_lost = false;
    const auto place = place_of_growing(action, edit, is_lost);
    growing_.erase(action.clip);
    if (!place) {
        taken_away_.erase(action.clip);
        return press_outcome{};
    }
    const auto pressed = span_of_press(*action.button, action.held, earliest_seconds_);
    auto plan = plan_finish(document_.timeline(), *place, *action.button, pressed,
                            [this](const sxy_CLIP& clip) { return coded_.held_time(clip); });
    std::move(plan.operations.begin(), plan.operations.end(), std::back_inserter(edit.operations));
    const std::string name = edit.name;
    if (auto applied = apply(std::move(edit)); !applied) return applied.error();
    note_finish(action, plan, pressed);
    if (is_lost) lost_.push_back(name);
    return press_outcome{made_kind::clip, plan.clip, false, false};
}

void press_recorder::note_finish(const press_action& action, const planned_finish& plan,
                                 const pressed_span& pressed) {
    coded_.note_button(plan.clip, action.button->uuid());
    coded_.note_made(plan.clip);
    if (plan.held) coded_.note_held(plan.clip, plan.span, *plan.held);
    for (const auto& neighbour : plan.moved) {
        // It was known before, or it would not have been moved.
        if (const auto held = coded_.held_time(*neighbour.clip))
            coded_.note_held(neighbour.clip->id(), neighbour.span, *held);
    }
    // Qualifiers of clips that were merged are on the one that stayed.
    const auto is_gone = [&](const stamped_qualifier& one) {
        return !document_.timeline().find_clip(one.clip) && !unsaved(one.clip);
    };
    if (std::any_of(last_stamped_->begin(), last_stamped_->end(), is_gone)) {
        for (auto& one : last_stamped_.change()) {
            if (is_gone(one)) one.clip = plan.clip;
        }
    }
    std::erase_if(running_.change(), [&](const running_clip& one) {
        return one.clip == plan.clip || one.until < action.at - latest_press_seconds;
    });
    if (pressed.span.end > action.at) running_.change().push_back({plan.clip, action.at, pressed.span.end});
}

// The row goes with it that was made for it, when nothing else came there; else it is another's that grows
// there.
result<press_outcome> press_recorder::drop(const press_action& action) {
    const auto known = growing_.extract(action.clip);
    const auto place = document_.timeline().find_clip(action.clip);
    if (!place || !place->is_live) {
        taken_away_.erase(action.clip);
        return press_outcome{};
    }
    auto edit = edit_of(action);
    edit.operations.emplace_back(operation::remove_clip{action.clip});
    const auto& growing = document_.timeline().live_clips();
    const auto row = document_.timeline().row(place->row);
    const bool is_made_for_it = known && known.mapped().row_made == place->row;
    const auto in_row =
        std::count_if(growing.begin(), growing.end(), [&](const auto& one) { return one.row == place->row; });
    if (is_made_for_it && row && row->clips().empty() && in_row == 1) {
        edit.operations.emplace_back(operation::remove_row{place->row});
    } else if (is_made_for_it) {
        for (const auto& one : growing) {
            const auto other = growing_.find(one.clip->id());
            if (one.row != place->row || other == growing_.end()) continue;
            other->second.row_made = place->row;
            break;
        }
    }
    if (auto applied = apply(std::move(edit)); !applied) return applied.error();
    return press_outcome{};
}

result<press_outcome> press_recorder::rename(const press_action& action) {
    auto edit = edit_of(action);
    edit.operations = plan_renaming(document_.timeline(), *action.button, action.selected);
    if (auto applied = apply(std::move(edit)); !applied) return applied.error();
    press_outcome renamed;
    renamed.nothing_to_stamp = action.selected.empty();
    return renamed;
}

}  // namespace vistels
