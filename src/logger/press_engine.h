// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "logger/button_fired.h"
#include "logger/button_looks.h"
#include "logger/button_set.h"
#include "logger/link_graph.h"
#include "logger/press_recorder.h"
#include "logger/press_settings.h"
#include "logger/trigger_track.h"
#include "timeline/files/timeline_document.h"
#include "util/clock.h"
#include "util/result.h"
#include "util/signal.h"
#include "util/transport.h"

namespace vistels {

// A button that is down.
struct down_button {
    std::string button;
    double since = 0;          // seconds on the collection's clock
    double clock_seconds = 0;  // the same moment on the monotonic clock
    bool is_latched = false;   // it stays down until its next press
};

// How a button is pressed.
struct press_manner {
    press_cause cause = press_cause::press;  // by hand, or what else puts it down
    bool latches = false;                    // it stays down until its next press
    std::optional<point> place;              // where on the button, in proportions from the upper left
    int hand = 0;                            // by which hand: a key's, the mouse's
};

// The buttons of one code window and their states: turns presses into edits of the timeline. Main thread
// only.
//
// States. A press of a button that is down, or of none that there is, does nothing, but: one that is latched
// goes up at its next press; one that something else than a hand put down is the hand's from then on and goes
// up with it. A release by hand belongs to a press by that hand, and of several the last one counts; one by
// the automatic presser, for which the same rules hold, to a press of its own. "auto up": the release counts
// for nothing; the button goes up by itself "auto up duration" after the press, or with "delayed up" after
// the release (at once, where a link or a trigger puts it down). While the collection's time runs towards
// that moment it decides, else as much real time; the time counted is the due one.
//
// What a press makes, by the button's type:
// - Clip: a clip grows from the press on the button's row (button_set::row_of; made when there is none). At
//   the release it goes into the row, from "secs in" before the press to "secs out" after the release; a
//   start below the earliest time is raised to it, an end below the start too. Where it would overlap clips
//   of its row: "merge clips" joins it with those that it overlaps or touches (the clip that starts first
//   stays and gets the others' qualifiers); "allow overlapping clips" leaves all as they are; else it shares
//   the time with them (overlap_rule). No press is lost.
// - Timer Clip: the same from press to release, with a clock; its row becomes a timer row.
// - Qualifier: stamped at the press on the clips that find_stamped_clips names. Buttons with "block
//   qualifiers" make clips that are passed over.
// - Attribute: by its stage it goes to the qualifiers of the last press of one, or waits for the next that is
//   stamped somewhere, or both. Escape and jumps of the playhead make it wait no more.
// - Trigger: goes to the button that "action link to UUID" names (`trigger_added`), else, as a mark, to the
//   clips that a qualifier would be stamped on.
// - None and unknown types change their state only. A renamer of any type moves the selected clips instead.
// "last ..." and "next ...": the button beside it in its category is pressed and released at once, each
// button once in what one press sets off. "note ...": `note_wanted`. A Cartesian button notes the place of
// its press with the qualifier or attribute.
//
// A jump of the playhead out of the time from a growing clip's start to the time left ends the clip there
// (that of an auto-up at its due time), and its button goes up. A jump within it does not: a release at an
// earlier time is the end.
//
// A clip that was taken away by an edit while it grew stays away when its button goes up. One that is missing
// without that is a loss: it is made again from what the press knows, and `made_again` tells.
//
// Links. A press, a release, an auto-up, a trigger begins a round. A button that changes its state follows
// its links in their order, each of them to its end before the next; a button that was pressed or released in
// the round is not put down or up again by a link, nor is one that is in that state already. A link with a
// condition is looked at when one of the buttons that have it to the same button comes into the state it
// names, with the states of that moment. A blocked button changes its state without what it makes, for the
// rest of the round: a clip that grew is given up. What links make of colours and order is of this run.
//
// Triggers of buttons put them down or up as the playhead passes them, at their own times.
//
// Each round is one edit, named after the button it began with, with that button's UUID for scope; the rounds
// in which a clip begins and ends are one step for undo. A press that cannot be put on record is kept in
// memory with all that follow it, `trouble` tells, and the work is tried again in order: at each further
// press and once a second in tick(). The states change at once all the same.
class press_engine {
  public:
    // Both must outlive the engine; so must what `set_transport` is given.
    press_engine(timeline_document& document, const clock& time);
    // Releases nothing: call release_all() before.
    ~press_engine();
    press_engine(const press_engine&) = delete;
    press_engine& operator=(const press_engine&) = delete;

    // Paused by the buttons that pause the movies, and asked for the time that the playhead has come to. Null
    // for none.
    void set_transport(transport* playing) { transport_ = playing; }
    // Clips do not start before it (the default is 0).
    void set_earliest_time(double collection_seconds) { recorder_.set_earliest_time(collection_seconds); }
    void set_settings(press_settings settings) { recorder_.set_settings(settings); }
    const press_settings& settings() const { return recorder_.settings(); }
    // What a renamer works on: the UUIDs of the selected clips.
    void set_selected_clips(std::function<std::vector<std::string>()> selected) {
        selected_ = std::move(selected);
    }

    // Where the code window is on record with the timeline: the part of an edit that makes the button that.
    // Without it a trigger that a press adds is told by `trigger_added` alone.
    using button_planner = std::function<std::optional<document_part>(const button_record& changed)>;
    void set_button_planner(button_planner plan) { plan_button_ = std::move(plan); }

    // The timeline's times moved by that many seconds: what is down and what is not on record yet moves
    // along.
    void shift_times(double seconds);

    // Other buttons from now on; those that are down and are not among them go up at `at` first, and no link
    // of theirs puts another one down. Triggers before `at` are passed by then.
    void set_buttons(std::vector<button_record> buttons, double at);
    const std::vector<button_record>& buttons() const { return buttons_.all(); }
    // Null when there is none.
    const markup_Button_Item* button(std::string_view uuid) const;
    // The buttons that the key presses, in canvas order.
    std::vector<std::string> buttons_for_key(const key_stroke& key) const;
    // What links, and presses on its field, have made of a button's look in this run.
    const button_looks& looks() const { return looks_; }
    // The row that the button's clips go to; null when it is still to be made.
    row_pointer row_of(const markup_Button_Item& button) const {
        return buttons_.row_of(document_.timeline(), button);
    }
    // The same for all buttons at once, in canvas order.
    std::vector<row_pointer> rows_of_all() const { return buttons_.rows_of_all(document_.timeline()); }
    // Attributes wait for the next qualifier that is stamped.
    bool has_waiting_attributes() const { return recorder_.has_waiting_attributes(); }

    // `at` is seconds on the collection's clock in all that follow. False when the state did not change.
    bool press(std::string_view button, double at, const press_manner& manner = {});
    bool release(std::string_view button, double at, press_cause cause = press_cause::press, int hand = 0);
    // All go up, whatever their options, and no link puts another one down: the window closes.
    void release_all(double at);
    // The tab key: all go up but those with "ignore tab".
    void tab(double at);
    // The Escape key: attributes wait no more; when none did, the clip begun last is given up. False: neither
    // was there.
    bool escape(double at);
    // The playhead went from one time to another without playing or stepping; the turn of a loop ends clips
    // wherever it leads to.
    void playhead_jumped(double from, double to, bool is_loop_turn = false);
    // A hand drags the playhead: nothing is passed on its way. Where it lets go, which is told by
    // playhead_jumped(), the playhead has jumped once, from where it was taken; something pressed meanwhile
    // finds it where it is, as though it were let go.
    void playhead_dragged(double from, double to);
    // Playback begins, goes on in another direction, or ends. Without it no trigger is passed.
    void follow_playing(double at, bool runs_forwards);
    // Called at every display tick, playing or not: auto-ups, triggers, the time on record, what could not be
    // recorded.
    void tick(double at);
    bool has_triggers() const { return triggers_.has_any(); }

    bool is_down(std::string_view button) const { return state_of(button) != nullptr; }
    std::optional<down_button> down_since(std::string_view button) const;
    // In the order in which they went down.
    std::vector<down_button> down_buttons() const;
    // When the next auto-up is due, or the next trigger passed, if the collection's time runs on, in seconds
    // on its clock.
    std::optional<double> next_due() const;
    // Clips that grow and are not on the timeline yet, since live clips are not saved.
    std::vector<clip_place> unsaved_growing() const { return recorder_.unsaved_growing(); }

    // What was pressed or released is being put on record: `fired` tells of it right after.
    bool is_recording() const { return is_recording_; }
    // Presses and releases that are not on record yet.
    std::size_t unrecorded() const { return recorder_.waiting(); }
    // Tries to record them now.
    result<void> record_waiting() { return recorder_.record_waiting(); }

    // Each change of state, in firing order, after its edit.
    signal<const button_fired&> fired;
    // Attributes that waited for a qualifier were given up.
    signal<> attributes_given_up;
    // A note is to be taken of the clip that this button makes.
    signal<const std::string& /*clip*/, const std::string& /*button*/> note_wanted;
    // A press added a trigger to the button of that UUID, which buttons() holds with it by now, without an
    // edit of the code window (see set_button_planner): it is to be saved with that.
    signal<const std::string&> trigger_added;
    // A link asks for the button to be in the middle of what is seen.
    signal<const std::string&> center_wanted;
    // A link was followed to its effect: from one button to another, of that kind.
    signal<const std::string&, const std::string&, const link_kind&> link_fired;
    signal<> looks_changed;
    // Why presses cannot be recorded, once when it begins (or the reason changes); an empty text when all
    // are.
    signal<const failure&> trouble;
    // The clip of this button got lost while it grew and was made again.
    signal<const std::string&> made_again;
    // Other buttons were set.
    signal<> buttons_changed;

    static constexpr double note_interval_seconds = press_recorder::note_interval_seconds;
    static constexpr double retry_interval_seconds = press_recorder::retry_interval_seconds;

  private:
    enum class holder { hand, latch, presser, other };
    struct button_state {
        down_button down;
        std::string clip;  // that grows; empty for types that make none
        holder held_by = holder::hand;
        std::vector<int> hands;      // that hold it
        bool is_taken_over = false;  // by a hand, from its timer
        bool jumped_back = false;
        std::optional<double> due_at;  // auto-up, the time that counts
        double due_place = 0;          // the collection's time at which it comes, if that runs on
    };
    struct playhead {
        double at = 0;             // collection's clock
        double clock_seconds = 0;  // monotonic
    };

    const button_state* state_of(std::string_view button) const;
    button_state* state_of(std::string_view button);
    bool take_over(button_state& state, double at, const press_manner& manner);
    void go_down(const button_record& pressed, double at, const press_manner& manner);
    void go_up(const std::string& button, double at, press_cause cause, bool drops = false);
    void go_up_in_round(const button_record& released, double at, press_cause cause, bool drops);
    void set_due(button_state& state, const markup_Button_Item& button, double from);
    void follow_playhead(double at);
    void release_due(double at);
    void come_to(double at);
    void let_go_of_playhead();
    double reached(double at) const;
    bool follows_triggers() const;
    void press_beside(const markup_Button_Item& button, double at, bool is_down);
    void give_up_attributes();
    struct round;
    void in_round(const markup_Button_Item& first, const std::function<void()>& act);
    void finish_round();
    void tell_of(const button_fired& event, const markup_Button_Item& button);
    void note_state(const std::string& button, bool is_down);
    void follow_links(const markup_Button_Item& button, bool is_down, double at);
    void follow_link(const link_graph::link& link, const button_record& target, double at);
    std::optional<document_part> plan_trigger(const std::string& button, const trigger_event_ITEM& trigger);
    void take_triggers(bool is_recorded);
    void pass_triggers(double at);
    void note_trace(const markup_Button_Item& pressed, const press_manner& manner);
    button_record worn(const button_record& button) const;
    std::optional<press_action> action_of_press(const button_record& pressed, const button_state& state,
                                                const press_manner& manner) const;

    timeline_document& document_;
    const clock& time_;
    transport* transport_ = nullptr;
    button_set buttons_;
    press_recorder recorder_;
    std::function<std::vector<std::string>()> selected_;
    button_planner plan_button_;
    std::vector<button_state> down_;  // in the order in which they went down
    link_graph graph_;
    button_looks looks_;
    trigger_track triggers_;
    std::unique_ptr<round> round_;  // under way
    std::uint64_t rounds_ = 0;
    bool is_recording_ = false;
    bool puts_down_ = true;           // links do
    std::optional<double> jumps_to_;  // while the playhead's jump is followed
    struct playhead_drag {
        double from = 0;
        double to = 0;
    };
    std::optional<playhead_drag> drag_;  // while a hand has the playhead
    struct planned_trigger {
        button_record button;  // with it
        bool is_on_record = false;
    };
    std::vector<planned_trigger> planned_;  // of the round that is being recorded
    std::optional<playhead> playhead_;      // at the last tick, or when the first button went down
};

}  // namespace vistels
