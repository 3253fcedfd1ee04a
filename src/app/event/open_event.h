// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "app/event/clip_view.h"
#include "app/event/collection_changes.h"
#include "app/event/press_log.h"
#include "app/event/undo_stack.h"
#include "app/settings/places.h"
#include "logger/code_window_document.h"
#include "timeline/files/last_clip_end.h"
#include "timeline/files/timeline_document.h"
#include "util/result.h"
#include "util/run_loop.h"
#include "util/signal.h"
#include "video/collection_document.h"
#include "video/synchronised_playback.h"

namespace vistels {

class blank_vistel_movie;
class button_outputs;
class press_engine;

// One open collection with everything that belongs to it: its record, its timeline, its code window, the
// playback of its vistels and the undo history of its timeline. A timeline that belongs to no collection
// opens too: its event has no pictures, and a clock that runs on beyond its last clip. Main thread.
class open_event {
  public:
    // Opens the collection in `folder`. A vistel or a code window that cannot be read does not keep the rest
    // from opening: it is told in messages(). A damaged collection record or timeline is an error that names
    // the file. A collection without a code window gets a general one. Playback stands at the stored movie
    // time. A timeline without a collection gets a general code window that is not saved. `loop` must outlive
    // the event.
    static result<std::unique_ptr<open_event>> open(const std::string& folder, const home_places& places,
                                                    run_loop& loop);
    // The same in two steps: read() may run on any thread, and the event it makes be destroyed there; then
    // begin() on the main thread, before anything else is asked of the event.
    static result<std::unique_ptr<open_event>> read(const std::string& folder, const home_places& places,
                                                    run_loop& loop);
    void begin();
    // Closes: releases the buttons that are down, saves the timeline and the movie time, and waits for that.
    ~open_event();
    open_event(const open_event&) = delete;
    open_event& operator=(const open_event&) = delete;

    const home_places& places() const { return places_; }
    const std::string& folder() const { return folder_; }
    const video_collection_ROOT& collection() const { return collection_.record(); }
    collection_document& collection_file() { return collection_; }
    code_window_document& code_window_file() { return *code_window_; }
    // The code window names another timeline than the event's, which it presses into all the same.
    bool code_window_is_linked_elsewhere() const;
    // From now on it names the event's.
    void link_code_window();
    // False for a timeline that belongs to no collection.
    bool has_collection() const { return has_collection_; }
    // Both are the collection's, or else the timeline's.
    std::string name() const;
    std::string uuid() const;
    timeline_document& timeline() { return *timeline_; }
    press_engine& logger() { return *logger_; }
    // What the formulas of its buttons say.
    button_outputs& outputs() { return *outputs_; }
    synchronised_playback& playback() { return *playback_; }
    undo_stack& undo() { return *undo_; }
    // The timeline's main view: which clips pass, which are selected.
    clip_view& view() { return *view_; }
    clip_filtering& filtering() { return view_->filtering(); }
    // Changes the collection so that it can be taken back. A timeline alone has a collection without vistels,
    // which is not to be changed.
    collection_changes& changes() { return *changes_; }
    // For work on other threads, which may outlast the event.
    std::shared_ptr<blank_vistel_movie> blank_movie() const { return blank_movie_; }

    // What there is to tell the user: recovered edits, unreadable vistels, damaged files.
    const std::vector<failure>& messages() const { return messages_; }
    // Of streamed vistels that are shorter than expected: to be told a moment after opening.
    const std::vector<failure>& alerts() const { return alerts_; }
    // Edits that the journal brought back when the timeline was opened.
    std::size_t recovered_edits() const { return timeline_->recovered_edits(); }

    // Seconds on the collection's clock between which there is a picture of any vistel, or before that a
    // clip; without movies, between which there are clips or the playhead stands.
    double start_seconds() const;
    // When the last clip ends, at least 0; known without looking through all of them.
    double last_clip_end_seconds() const { return last_end_->seconds(); }
    double end_seconds() const;
    // No vistel has a movie (yet), or there is no collection: the clock is all there is, started by playing
    // and running on beyond the last clip.
    bool runs_on_clock() const;

    // The playhead goes there without playing what lies between; what is being coded ends, or goes on, with
    // it. A seek of playback() itself is a step: it ends nothing.
    void jump(double collection_seconds, bool is_loop_turn = false);
    // The same for a hand that drags it, see synchronised_playback::scrub(): all of it is one jump, which a
    // jump() ends.
    void scrub(double collection_seconds);

    // Why a vistel, or the movie part at the present time, cannot be shown; none when all is well.
    failure problem(const std::string& vistel) const;

    // Each changes the collection and brings playback into step, by changes(). `vistel` is a UUID.
    result<void> set_offset(const std::string& vistel, double seconds);
    result<void> set_sound_vistel(const std::string& vistel);
    // What is heard is the product of the collection's volume and the application's, both from 0 to 1, or
    // nothing while it is silenced: muted, or another event is heard.
    void set_volume(double volume);
    void set_application_volume(double volume);
    double application_volume() const { return application_volume_; }
    void set_silenced(bool silenced);
    // Saves the volumes that were set since they were saved last; the collection's in the background.
    result<void> keep_volumes();
    // Sounds by that algorithm and saves it for all events.
    result<void> choose_pitch(pitch_algorithm pitch);
    // The application's volume was set, and is kept, elsewhere.
    void take_application_volume(double volume);
    // Tries again to change an event that another program had open, see recorded_document::try_to_write().
    // The collection record is read anew. On failure all is as it was. In two steps as there:
    // prepare_to_write() may run on any thread.
    void prepare_to_write(bool take_over);
    result<void> write_prepared();

    // The enlarged vistel; an empty text: none. Saved with the next change, or on closing.
    void set_enlarged(const std::string& vistel);
    std::string enlarged() const;

    // Begins to save what is unsaved of timeline, collection and code window, with the present movie time;
    // `save_ended` tells.
    void save_soon();
    // The same, and waits for it.
    result<void> save_all();
    bool has_unsaved_edits() const;
    // A save of one of the event's documents ended: no failure when nothing is wrong with any, or why one
    // could not be saved (it is tried again).
    signal<const failure&> save_ended;

    // The collection record changed.
    signal<> collection_changed;

  private:
    open_event(std::string folder, home_places places, run_loop& loop);
    result<void> load();
    void take_up_collection(loaded_collection read);
    result<void> read_timeline();
    code_window code_window_to_show(bool& is_kept);
    void read_code_window();
    void show_buttons();
    void link_collection();
    struct what_was_read;
    void begin_playback(const what_was_read& read);
    void begin_presses(what_was_read& read);
    void open_undo();
    void take_up_history(const undo_history& kept);
    void open_changes();
    void follow_change(double shift);
    void feed_playback();
    void feed_volume();
    double movie_time_to_restore() const;
    void note_position();
    void open_saving();
    std::vector<editable_document*> documents();  // each before what keeps it
    void follow_presses();
    void follow_playing();
    bool passes_triggers() const;
    void tick();

    const std::string folder_;
    const home_places places_;
    run_loop& loop_;
    bool has_collection_ = true;
    bool has_new_numbers_ = false;  // vistels that had none got one, which is to be saved
    double application_volume_ = 1;
    double kept_application_volume_ = 1;
    bool is_silenced_ = false;
    bool is_jumping_ = false;
    std::vector<failure> messages_;
    std::vector<failure> alerts_;
    std::unique_ptr<what_was_read> read_;  // until begin()
    struct what_was_read_again;
    std::unique_ptr<what_was_read_again> again_;  // until write_prepared()
    std::unique_ptr<timeline_document> timeline_;
    std::unique_ptr<last_clip_end> last_end_;
    collection_document collection_;  // after its keeper, as the code window
    std::unique_ptr<code_window_document> code_window_;
    std::vector<failure> problems_;  // of the last save of each document; none: it succeeded
    std::unique_ptr<clip_view> view_;
    std::unique_ptr<synchronised_playback> playback_;
    // What playback was given.
    std::pair<double, double> fed_range_ = {0, 0};
    std::vector<playback_vistel> fed_vistels_;
    std::string fed_sound_;
    std::unique_ptr<press_engine> logger_;
    std::unique_ptr<press_log> press_log_;
    std::unique_ptr<button_outputs> outputs_;
    std::unique_ptr<undo_stack> undo_;
    const std::shared_ptr<blank_vistel_movie> blank_movie_;
    std::unique_ptr<collection_changes> changes_;
    std::unique_ptr<tick_task> presses_;  // while the press engine waits for a time, or for the disk
    std::vector<connection> saves_;
    connection made_;
    connection fired_;
    connection made_again_;
    connection playing_;
    connection buttons_;
};

}  // namespace vistels
