// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "util/display_tick.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"
#include "util/signal.h"
#include "util/transport.h"
#include "video/answer_watch.h"
#include "video/collection_clock.h"
#include "video/playback_rules.h"
#include "video/playback_sound.h"
#include "video/vistel_player.h"

namespace vistels {

// A vistel as playback sees it. Its movie time is the collection time plus its lead.
struct playback_vistel {
    std::string uuid;
    double lead = 0;  // seconds
    std::vector<playback_part> parts;
    double number = 0;  // above 100000: not a camera's movie

    bool operator==(const playback_vistel&) const = default;
};

// Where to go.
struct seek_wish {
    double collection_seconds = 0;
    double tolerance = 0;  // seconds before and after that time within which a frame will do
    std::string source;    // who asks
};

// Plays the vistels of a collection in step: one clock, and at each tick every vistel's frame at its movie
// time. Collection time runs from minus the largest lead to the end of the vistel that lasts longest; playing
// stops there. A vistel whose movie does not answer for 5 seconds is unreadable until it does; it is tried
// anew every 10 seconds, and nobody waits for it. Everything happens on the main thread, driven by a timer of
// the run loop, and nothing waits for a file.
class synchronised_playback final : public transport {
  public:
    // `loop` outlives the playback. The pictures are kept within `budget`. How long movies take to answer
    // goes by `patience`, which outlives the playback, too; null: by the machine's clock, whatever that of
    // the loop is.
    explicit synchronised_playback(run_loop& loop,
                                   std::shared_ptr<frame_budget> budget = frame_budget::of_program(),
                                   const clock* patience = nullptr);
    ~synchronised_playback() override;

    // Vistels that were there before with the same movies go on undisturbed.
    void set_vistels(std::vector<playback_vistel> vistels);
    void set_lead(const std::string& uuid, double lead);
    // The range that there is whatever the vistels hold, for an event that has none; the default is 0, 0.
    void set_least_range(double first, double last);
    // The size, in pixels, that a vistel's pictures are made in; 0, 0: the movie's own.
    void set_view_size(const std::string& uuid, int width, int height);
    // Whether the user sees the vistel, as one does from the beginning. One out of sight is not decoded and
    // has no picture, but for the one whose frames are stepped by while playback stands still.
    void set_seen(const std::string& uuid, bool seen);
    // Whether the user works with this event, as one does from the beginning. One in the background that
    // stands still keeps no picture but those shown.
    void set_in_front(bool in_front);
    // Whose frames are stepped by; empty: the first vistel's.
    void set_enlarged(const std::string& uuid) { enlarged_ = uuid; }
    // Who is heard; empty: the first vistel.
    void set_sound_vistel(const std::string& uuid);
    void set_volume(double volume);  // 0 to 1
    double volume() const { return volume_; }
    // What becomes of the sound's pitch at other rates than 1.
    void set_pitch(pitch_algorithm pitch);
    pitch_algorithm pitch() const { return pitch_; }
    // A positive top speed bounds playing forwards, a negative one playing backwards.
    void set_top_speed(double stored);
    // The fastest that playing in that direction (1 or -1) can be, as a positive number.
    double top_speed(int direction) const { return direction < 0 ? -top_reverse_ : top_forward_; }

    double collection_time() const override { return clock_.time(); }
    double shown_time() const override { return is_playing() ? shown_time_ : clock_.time(); }
    double collection_time_at(double clock_seconds) const override { return clock_.time_at(clock_seconds); }
    bool is_playing() const override { return clock_.is_playing(); }
    double rate() const override { return clock_.rate(); }
    void play() override;
    void pause() override;
    void set_rate(double rate) override;
    void seek(double collection_seconds) override { seek(collection_seconds, nullptr); }
    // `done` is called once every vistel shows its frame at that time, or cannot; not at all when another
    // seek or step comes first.
    void seek(double collection_seconds, std::function<void()> done);
    // The same; with a tolerance what is nearest at hand is shown, and stays as long as nothing else is asked
    // for.
    void seek(const seek_wish& wish, std::function<void()> done);
    // Brings one vistel alone to a time: what it was to show before is given up, and it is asked for the
    // frames of the clock again once a frame near enough is there. `done` is called then; not at all when
    // another seek comes first.
    void seek_vistel(const std::string& uuid, const seek_wish& wish, std::function<void()> done = nullptr);
    // What is still being sought is not told any more; playback stays where the clock stands.
    void cancel_seeks();
    // Who asked for the seek that a vistel is at; empty: it is at none of its own.
    std::string seek_source(const std::string& uuid) const;
    // So many frames on (more than 0) or back (less), of the enlarged vistel or the first; playing stops. Of
    // several each is passed in turn, and more that are asked for meanwhile are added.
    void step(int frames, std::function<void()> done = nullptr);
    // For a hand that drags: the key frame before that time is shown at once, and the very frame when the
    // hand has rested for a moment. The same as a seek while playing.
    void scrub(double collection_seconds) override;

    double first_time() const { return clock_.first(); }
    double last_time() const { return clock_.last(); }

    // The ticks by which this plays; whatever else moves with it is to be run by them too.
    display_tick& ticks() { return ticks_; }
    // Brings what is shown up to the clock, between ticks.
    void tick() { show(clock_.time()); }

    // What a vistel shows as of the last tick. A null picture: black.
    picture_pointer picture(const std::string& uuid) const;
    // The shown frame's time on the vistel's own time line.
    std::optional<double> picture_seconds(const std::string& uuid) const;
    // Its movies are over at this time: the last picture stays.
    bool is_over(const std::string& uuid) const;
    // How long a frame of the vistel stands on average; 0 when there is no such vistel.
    double frame_seconds(const std::string& uuid) const;
    vistel_state state(const std::string& uuid) const;
    failure problem(const std::string& uuid) const;
    // What tells the movie that the vistel shows from the one on record; none when nothing does.
    failure difference_from_record(const std::string& uuid) const;
    // Whether every vistel that is seen shows its very frame, or one within the tolerance of the last seek,
    // or cannot show any.
    bool is_settled() const;
    // How long a frame of the vistel took to be read lately.
    double decode_milliseconds(const std::string& uuid) const;
    // Seconds from the clock to the frame that is shown in place of the right one; 0 when that is there, or
    // none.
    double difference(const std::string& uuid) const;
    // Whether a vistel's queue is at work.
    bool is_reading(const std::string& uuid) const;
    // Whether it takes part in the ticks: while the collection's time moves, and half a second longer.
    bool timer_runs() const { return task_.is_running(); }
    // What the last correction of lagging vistels had to say, and how many moved some vistel.
    const std::string& correction_note() const { return correction_note_; }
    int corrections() const { return corrections_; }
    // How often it was sought, stepped or scrubbed.
    int jumps() const { return jumps_; }

    signal<> pictures_changed;  // what some vistel shows, or with none the time that was sought
    signal<> state_changed;     // playing or not, rate, range, a vistel's state

  private:
    // Of one vistel alone, by which it goes instead of the clock until a frame is there.
    struct own_seek {
        seek_wish wish;
        std::function<void()> done;
    };
    struct entry {
        playback_vistel vistel;
        std::unique_ptr<vistel_player> player;
        picture_pointer shown;
        double shown_seconds = 0;
        int width = 0;
        int height = 0;
        vistel_state state = vistel_state::waiting;
        failure problem;
        failure difference;
        bool is_near = false;  // what is shown is within the tolerance of what was asked for
        std::optional<own_seek> seeks;
        std::optional<double> last_correction_seconds;
        answer_watch watch;
        double files_checked = 0;                        // machine time
        std::vector<std::weak_ptr<vistel_player>> left;  // those that hang
        bool is_from_before = false;  // what is shown was asked for before the last jump: no position
        bool is_seen = true;
        bool returns = false;  // it was out of sight and has shown nothing since
    };
    struct arrival_link;

    const entry* find(const std::string& uuid) const;
    entry* find(const std::string& uuid);
    const entry* stepped() const;
    const entry* first_movie() const;  // null when there are pictures alone
    bool is_followed(const entry& vistel) const;
    std::unique_ptr<vistel_player> make_player(const playback_vistel& vistel);
    void retire(entry& gone);
    void need_watch();
    void look_after_vistels();
    bool look_after(entry& vistel);
    void try_anew(entry& vistel);
    void update_range();
    void start_timer();
    void timer_tick();
    void take_arrivals();
    void show(double now);
    bool show(entry& vistel, double now);
    void ask(const entry& vistel, double now);
    double tolerance_of(const entry& vistel) const;
    static double seconds_of(const entry& vistel, double now);
    void end_hurry();
    std::function<void()> end_own_seek(entry& vistel);
    bool is_answering_now(const entry& vistel) const;
    void correct_lags();
    void update_sound(double now);
    void step_once(int direction);
    void go_on_stepping();
    void stop_stepping();
    void settle();
    void move_to(double seconds, int direction, bool snap, std::function<void()> done, double tolerance = 0);

    run_loop& loop_;
    const steady_clock machine_clock_;
    const clock& patience_;
    const std::shared_ptr<frame_budget> budget_;
    collection_clock clock_;
    display_tick ticks_;
    tick_task task_;
    double shown_time_ = 0;  // of the last tick
    std::vector<entry> vistels_;
    double least_first_ = 0;
    double least_last_ = 0;
    bool is_in_front_ = true;
    std::string enlarged_;
    std::string sound_vistel_;
    double volume_ = 1;
    pitch_algorithm pitch_ = pitch_algorithm::varispeed;
    double top_forward_ = top_forward_rate;
    double top_reverse_ = top_reverse_rate;
    int direction_ = 0;   // of the last step
    int steps_left_ = 0;  // less than 0: back
    std::function<void()> steps_done_;
    run_loop::timer_id rest_timer_ = 0;  // until a hand that drags has rested
    bool snap_to_frame_ = false;         // stand at the frame's own time once it is known
    double tolerance_ = 0;               // of the last seek
    bool hurries_ = false;               // until all show what was sought none reads anything else
    std::function<void()> done_;
    playback_timer_record timer_record_;
    std::string correction_note_;
    int corrections_ = 0;
    int jumps_ = 0;
    playback_sound sound_;
    double last_follow_seconds_ = 0;      // machine time
    run_loop::timer_id watch_timer_ = 0;  // while vistels are looked after
    std::shared_ptr<arrival_link> arrivals_;
    // Waits in the place of the main thread until players that are gone have ended their work; made when it
    // is first needed.
    std::unique_ptr<serial_queue> retired_;
};

}  // namespace vistels
