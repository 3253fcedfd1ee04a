// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "logger/button_set.h"
#include "logger/coded_clips.h"
#include "logger/press_action.h"
#include "logger/press_settings.h"
#include "logger/qualifier_reach.h"
#include "timeline/files/timeline_document.h"
#include "util/clock.h"
#include "util/copied_on_change.h"
#include "util/result.h"
#include "util/signal.h"

namespace vistels {

// Puts what presses make on record: each round is one edit of the timeline, planned when it is made. One that
// cannot be put on record waits, with all that follow it, and is tried again in order. It knows which
// clips grow, what presses of this run made, and which attributes wait for a qualifier. Main thread only.
class press_recorder {
  public:
    struct observer {
        // Why actions cannot be recorded, once when it begins or the reason changes; none when all are.
        std::function<void(const failure& reason)> trouble;
        // The clip of the button with that name got lost while it grew and was made again.
        std::function<void(const std::string& name)> made_again;
        // The trigger that is added to the button with that UUID: the part of the press's edit that does it,
        // if the code window is on record. Told by `triggers_added` when it is, or was kept.
        std::function<std::optional<document_part>(const std::string& button, const trigger_event_ITEM&)>
            plan_trigger;
        std::function<void(bool is_recorded)> triggers_planned;
    };
    // All must outlive it.
    press_recorder(timeline_document& document, const clock& time, const button_set& buttons, observer told);
    press_recorder(const press_recorder&) = delete;
    press_recorder& operator=(const press_recorder&) = delete;

    void set_settings(press_settings settings) { settings_ = settings; }
    const press_settings& settings() const { return settings_; }
    void set_earliest_time(double collection_seconds) { earliest_seconds_ = collection_seconds; }

    // After all that waits: what came of each action. Nothing: it waits, too.
    std::optional<std::vector<press_outcome>> record(press_round round);
    result<void> record_waiting();
    std::size_t waiting() const { return waiting_.size(); }
    // A round is under way: none may be recorded before it is done.
    bool is_recording() const { return is_recording_; }
    // Called at every display tick: what waits is tried again, and while something is down the time is noted.
    void tick(double at, bool anything_down);

    // Attributes will wait for a qualifier when all is on record that waits for that.
    bool has_waiting_attributes() const;
    void shift_times(double seconds);

    // Clips that grow and are not put on record before they end.
    std::vector<clip_place> unsaved_growing() const;

    static constexpr double note_interval_seconds = 0.25;
    static constexpr double retry_interval_seconds = 1;

  private:
    using kind = press_action::kind;
    // A clip that ended, with its "secs out".
    struct running_clip {
        std::string clip;
        double from = 0;
        double until = 0;
    };
    struct growing_clip {
        std::optional<shared_text> row_made;  // for it
        std::shared_ptr<sxy_CLIP> unsaved;    // null: the timeline has it
    };
    struct stamped_qualifier {
        std::string clip;
        std::string qualifier;
    };
    struct state;  // what a round that fails must find again
    using qualifier_rows = std::unordered_set<shared_text>;

    result<std::vector<press_outcome>> record_first();
    state keep_state();
    void put_back(state kept);
    result<press_outcome> make(const press_action& action);
    result<press_outcome> begin(const press_action& action);
    result<press_outcome> finish(const press_action& action);
    result<press_outcome> drop(const press_action& action);
    result<press_outcome> stamp(const press_action& action);
    result<press_outcome> add_attribute(const press_action& action);
    result<press_outcome> add_trigger(const press_action& action);
    result<press_outcome> rename(const press_action& action);

    timeline_edit edit_of(const press_action& action) const;
    result<void> apply(timeline_edit edit);
    row_pointer row_for(const press_action& action, timeline_edit& edit) const;
    std::optional<clip_place> place_of_growing(const press_action& action, timeline_edit& edit,
                                               bool& is_lost);
    void note_finish(const press_action& action, const planned_finish& plan, const pressed_span& pressed);
    stamped_clips reach(double at) const;
    void put_qualifier(timeline_edit& edit, const std::string& clip, const qual_ITEM& item);
    void put_attribute(timeline_edit& edit, const stamped_qualifier& on,
                       const clip_attribute_ITEM& attribute);
    void put_trigger(timeline_edit& edit, const std::string& clip, const trigger_event_ITEM& trigger);
    void change_unsaved(const std::string& clip, std::function<void(sxy_CLIP&)> change);
    const sxy_CLIP* unsaved(const std::string& clip) const;
    qualifier_rows rows_without_qualifiers() const;
    bool takes_no_qualifiers(const clip_place& place, std::optional<qualifier_rows>& rows) const;
    void follow_edit(const timeline_edit& edit);
    void tell_trouble(const failure& reason);

    timeline_document& document_;
    const clock& time_;
    const button_set& buttons_;
    const observer observer_;
    press_settings settings_;
    double earliest_seconds_ = 0;
    std::deque<press_round> waiting_;
    failure trouble_;
    double last_note_seconds_ = -1e9;   // monotonic clock
    double last_retry_seconds_ = -1e9;  // monotonic clock

    std::map<std::string, growing_clip> growing_;
    std::unordered_set<std::string> taken_away_;  // growing clips, by edits
    coded_clips coded_;
    copied_on_change<std::vector<running_clip>> running_;
    copied_on_change<std::vector<stamped_qualifier>> last_stamped_;
    std::vector<clip_attribute_ITEM> waiting_attributes_;
    std::vector<std::string> lost_;  // names of buttons whose clips are made again by the round under way
    bool plans_triggers_ = false;    // the round under way does
    bool is_recording_ = false;
    std::optional<double> begun_at_;  // when the last clip began that the round under way begins
    // Changes of unsaved clips that an edit brings along, made when it is on record.
    std::vector<std::function<void()>> with_edit_;
    connection edited_;
};

}  // namespace vistels
