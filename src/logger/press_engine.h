// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "logger/markup_Button_Item.h"
#include "timeline/files/timeline_document.h"
#include "util/clock.h"
#include "util/result.h"
#include "util/shared_text.h"
#include "util/signal.h"
#include "util/transport.h"

namespace vistels {

// Why a button changed its state.
enum class press_cause { press, link, auto_up, trigger, tab };
// "press", "link", "auto up", "trigger", "tab"
std::string_view press_cause_text(press_cause cause);

// What a change of state made on the timeline.
enum class made_kind { nothing, clip, qualifier, attribute };
// "clip", "qualifier", "attribute"; empty for nothing.
std::string_view made_kind_text(made_kind made);

// One change of a button's state.
struct button_fired {
    double at = 0;  // seconds on the collection's clock
    std::string button;
    std::string name;
    bool is_down = false;
    press_cause cause = press_cause::press;
    bool blocked = false;  // the state changed without the button's action
    made_kind made = made_kind::nothing;
    bool nothing_to_stamp = false;  // a qualifier found no clip
    bool recorded = true;           // false: kept in memory, see press_engine::trouble
};

// A button that is down.
struct down_button {
    std::string button;
    double since = 0;          // seconds on the collection's clock
    double clock_seconds = 0;  // the same moment on the monotonic clock
};

// The buttons of one code window and their states: turns presses into edits of the timeline. Main thread
// only.
//
// - A press of a button that is down, or of none that there is, does nothing.
// - Clip: at the press a clip begins to grow on the row named like the button (among several the one of its
//   category, else the first; made when there is none, with the button's name, category and colour). At the
//   release it goes into the row, from "secs in" before the earlier of the two moments to "secs out" after
//   the later one; a start below the earliest time is raised to it, an end below the start too. Where it
//   would overlap clips of its row: "merge clips" joins it with those that it overlaps or touches (the clip
//   that starts first stays and gets the others' qualifiers); "allow overlapping clips" leaves all as they
//   are; else it keeps the free piece that holds most of the time for which the button was down, or with none
//   such the longest, and only when no piece is free it overlaps: no press is lost.
// - Qualifier: at the press it is stamped on the clips that are growing; else, in each row, on the clip that
//   started last among those that hold the time; else on the clip made last that is still there; else on the
//   clip that ended last before the time. Clips of buttons with "block qualifiers" are passed over.
// - None and all other types change their state only.
// - "auto up": the release by hand counts for nothing; the button goes up by itself "auto up duration" after
//   the press, or with "delayed up" after the release by hand. It does so when the collection's clock gets
//   there, or when as much real time has passed (playback may stand), and the time counted is the due one.
//
// A clip that was taken away by an edit while it grew stays away when its button goes up. One that is missing
// without that is a loss: it is made again from what the press knows, and `made_again` tells.
//
// Each press and release is one edit, named after the button, with the button's UUID for scope. A press that
// cannot be put on record is kept in memory with all that follow it, `trouble` tells, and the work is tried
// again in order: at each further press and once a second in tick(). The states change at once all the same.
class press_engine {
  public:
    // Both must outlive the engine; so must what `set_transport` is given.
    press_engine(timeline_document& document, const clock& time);
    // Releases nothing: call release_all() before.
    ~press_engine() = default;
    press_engine(const press_engine&) = delete;
    press_engine& operator=(const press_engine&) = delete;

    // Paused by the buttons that pause the movies. Null for none.
    void set_transport(transport* playing) { transport_ = playing; }
    // Clips do not start before it (the default is 0).
    void set_earliest_time(double collection_seconds) { earliest_seconds_ = collection_seconds; }

    // The timeline's times moved by that many seconds: what is down and what is not on record yet moves
    // along.
    void shift_times(double seconds);

    // Other buttons from now on; those that are down and are not among them go up at `at` first.
    void set_buttons(std::vector<button_record> buttons, double at);
    const std::vector<button_record>& buttons() const { return buttons_; }
    // Null when there is none.
    const markup_Button_Item* button(std::string_view uuid) const;
    // The buttons that the key presses, in canvas order.
    std::vector<std::string> buttons_for_key(const key_stroke& key) const;

    // `at` is seconds on the collection's clock in all that follow. False when the state did not change.
    bool press(std::string_view button, double at);
    // By hand; see "auto up".
    bool release(std::string_view button, double at);
    // All go up, whatever their options: the window closes.
    void release_all(double at);
    // The tab key: all go up but those with "ignore tab".
    void tab(double at);
    // Called at every display tick, playing or not: auto-ups, the time on record, what could not be recorded.
    void tick(double at);

    bool is_down(std::string_view button) const { return state_of(button) != nullptr; }
    std::optional<down_button> down_since(std::string_view button) const;
    // In the order in which they went down.
    std::vector<down_button> down_buttons() const;
    // When the next auto-up is due, in seconds on the collection's clock.
    std::optional<double> next_auto_up() const;

    // Presses and releases that are not on record yet.
    std::size_t unrecorded() const { return waiting_.size(); }
    // Tries to record them now.
    result<void> record_waiting();

    // Each change of state, in firing order, after its edit.
    signal<const button_fired&> fired;
    // Why presses cannot be recorded, once when it begins (or the reason changes); an empty text when all
    // are.
    signal<const failure&> trouble;
    // The clip of this button got lost while it grew and was made again.
    signal<const std::string&> made_again;
    // Other buttons were set.
    signal<> buttons_changed;

    // While a button is down the time is put on record this often, for the end of its clip after a kill.
    static constexpr double note_interval_seconds = 0.25;
    static constexpr double retry_interval_seconds = 1;

  private:
    struct button_state {
        down_button down;
        std::string clip;              // the clip that grows; empty for other types
        std::optional<double> due_at;  // auto-up, collection clock
        double due_clock_seconds = 0;  // the same on the monotonic clock
    };
    // A press or release to be recorded, with the button as it was then.
    struct pending_action {
        markup_Button_Item button;
        bool is_down = false;
        double pressed_at = 0;
        double at = 0;
        std::string clip;
        std::string time_of_day;  // of a qualifier
    };
    struct outcome {
        made_kind made = made_kind::nothing;
        bool nothing_to_stamp = false;
    };

    const button_state* state_of(std::string_view button) const;
    void set_due(button_state& state, const markup_Button_Item& button, double from);
    void go_up(const std::string& button, double at, press_cause cause);
    void release_due(double at);
    void fire(const pending_action& action, press_cause cause);
    result<outcome> record_first();
    result<outcome> record(const pending_action& action);
    result<outcome> record_begin(const pending_action& action);
    result<outcome> record_finish(const pending_action& action);
    row_pointer row_for(const pending_action& action, timeline_edit& edit) const;
    void follow_edit(const timeline_edit& edit);
    result<outcome> record_stamp(const pending_action& action);
    static timeline_edit edit_of(const pending_action& action);
    std::unordered_set<shared_text> rows_without_qualifiers() const;
    bool takes_no_qualifiers(const clip_place& place, const std::unordered_set<shared_text>& rows) const;
    void tell_trouble(const failure& reason);

    timeline_document& document_;
    const clock& time_;
    transport* transport_ = nullptr;
    double earliest_seconds_ = 0;
    std::vector<button_record> buttons_;
    std::vector<button_state> down_;       // in the order in which they went down
    std::vector<std::string> made_clips_;  // the last one at the end
    std::deque<pending_action> waiting_;
    std::unordered_set<std::string> taken_away_;  // growing clips, by edits
    failure trouble_;
    double last_note_seconds_ = -1e9;   // monotonic clock
    double last_retry_seconds_ = -1e9;  // monotonic clock
    connection edited_;
};

}  // namespace vistels
