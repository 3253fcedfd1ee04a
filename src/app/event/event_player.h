// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "util/display_tick.h"
#include "util/result.h"
#include "util/signal.h"
#include "util/transport.h"

namespace vistels {

class clip_selection;
class open_event;

// What a person does to playback of the event in a window: transport, rates, loop, volume, one clip played.
// Loop, muting and being heard hold for whichever event is shown. Every command is harmless while there is
// none. Seconds are those of the collection's clock. Main thread.
class event_player {
  public:
    event_player();
    ~event_player();
    event_player(const event_player&) = delete;
    event_player& operator=(const event_player&) = delete;

    // Null: none. The event must outlive its use here.
    void set_event(open_event* event);

    void play_or_pause();
    void pause();
    // Another press of a key that plays faster and faster in that direction.
    void shuttle(int direction);
    // Of the event, for what plays it on a person's wish: a seek is one here. At rest at 0 without an event.
    transport& commands() { return *commands_; }
    // The same, slower and slower.
    void play_slower(int direction);
    // Frames on or back; where there are none, as long as one usually stands.
    void step(int frames);
    // As many frames as the settings say, in that direction (1 or -1).
    void step_several(int direction);
    void jump(double seconds);
    // Brought within the event.
    void seek(double seconds);
    // The same for a hand that drags, see open_event::scrub(). A seek is its end.
    void scrub(double seconds);
    void to_start();
    void to_end();
    void set_rate(double rate);

    // Plays the one selected clip again and again, each time with its lead-in and halts as play_clip() does,
    // or else the event.
    void set_looping(bool looping);
    bool is_looping() const { return looping_; }
    // The selected clips, or their times, are others.
    void follow_selection();
    // They are those of this view from now on, until it is forgotten or another event is shown; before that,
    // those of the event's main view.
    void follow_selection(const clip_selection& selection);
    void forget_selection(const clip_selection& gone);
    // Plays a clip forwards from its start, or as long before it as the lead-in of the settings says, and
    // stops at its end; another command of a person ends that. It halts at each pause point, and plays on
    // from there when it is to play. Without a name: the first that is selected. Nothing when there is no
    // such clip. `from`: the fraction of it, 0 to 1, that is left out.
    void play_clip(const std::string& clip = {}, double from = 0);
    // Where the clip that is played stands, as a fraction of it; nothing when none is.
    std::optional<double> clip_fraction() const;
    // While clips are played one after another neither loop nor end of a clip counts.
    void set_plays_list(bool plays) { plays_list_ = plays; }

    // From 0 to 1: the event's volume, and that of the application, which lies over those of all events. Both
    // are heard at once, which unmutes; keep_volumes() saves them when the person has chosen.
    void set_volume(double volume);
    void change_volume(int steps);
    double volume() const;
    void set_application_volume(double volume);
    double application_volume() const;
    result<void> keep_volumes();
    // The application's volume was chosen, and is kept, elsewhere.
    void take_application_volume(double volume);
    void set_muted(bool muted);
    bool is_muted() const { return muted_; }
    // Whether the sound comes out, at the volume and muting set: where several windows play only one is
    // heard.
    void set_heard(bool heard);
    bool is_heard() const { return heard_; }

    void enlarge(const std::string& vistel);
    // The next one; after the last none is.
    void enlarge_next();

    signal<> sought;            // the time was set by a command here
    signal<> volumes_changed;   // volumes, muting
    signal<> enlarged_changed;  // another vistel, or none
    signal<> looping_changed;

  private:
    struct stretch {
        double start = 0;
        double end = 0;
        std::string clip;  // empty: the event
    };

    class person_commands;

    void tick();
    void move_to(double seconds, bool is_jump);
    double within(double seconds) const;
    void go_to(double seconds, bool is_loop_turn = false);
    void follow_playing();
    double lead_in_seconds() const;
    void forget_played();
    void forget_played_unless_halting();
    bool halt_at_pause_point(const stretch& clip, double from, double to);
    void apply_volume();

    const clip_selection& selection() const;

    open_event* event_ = nullptr;
    const std::unique_ptr<transport> commands_;
    const clip_selection* followed_ = nullptr;  // null: the main view's
    std::unique_ptr<tick_task> task_;           // while the event plays
    connection state_;
    bool looping_ = false;
    stretch loop_;                   // what is played again and again
    std::optional<stretch> played_;  // the clip that is played
    double seen_ = 0;                // the time of the last tick, or where playing began after it
    bool halts_ = false;             // at a pause point of what is played
    bool plays_list_ = false;
    bool muted_ = false;
    bool heard_ = true;
};

}  // namespace vistels
