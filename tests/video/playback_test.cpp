// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <string_view>
#include <thread>

#include "video/synchronised_playback.h"

#if VISTELS_HAVE_MEDIA

#include "media/packet_index.h"
#include "support/coded_movie.h"
#include "support/run_until.h"
#include "support/temporary_folder.h"
#include "util/plain_run_loop.h"
#include "util/simulated_run_loop.h"
#include "util/wait_watch.h"
#include "video/collection_failures.h"

namespace vistels {
namespace {

using namespace vistels::testing;

constexpr double wait_seconds = 60;

// Two cameras of 4 seconds; the second one's movie is cut in two with a second between.
class playback : public ::testing::Test {
  protected:
    playback() {
        EXPECT_TRUE(write_small_coded_movie(folder_ / "long.mp4", 120, 20).ok());
        EXPECT_TRUE(write_small_coded_movie(folder_ / "short.mp4", 30, 20).ok());
        played_.set_volume(0);
    }

    void set_both() {
        played_.set_vistels({{"a", 0.0, {{folder_ / "long.mp4", 0, 4}}},
                             {"b", 0.5, {{folder_ / "long.mp4", 0, 4}, {folder_ / "short.mp4", 5, 1}}}});
        for (const char* uuid : {"a", "b"}) played_.set_view_size(uuid, 160, 120);
    }

    bool wait_for(const std::function<bool()>& done) { return loop_.run_until(done, wait_seconds); }

    void seek(double seconds) {
        bool done = false;
        played_.seek(seconds, [&] { done = true; });
        ASSERT_TRUE(wait_for([&] { return done; }));
    }

    void step(int direction) {
        bool done = false;
        played_.step(direction, [&] { done = true; });
        ASSERT_TRUE(wait_for([&] { return done; }));
    }

    // -1: nothing is shown.
    int shown(const char* uuid) const {
        const auto picture = played_.picture(uuid);
        return picture ? read_frame_number(*picture) : -1;
    }

    temporary_folder folder_;
    plain_run_loop loop_;
    synchronised_playback played_{loop_};
};

TEST_F(playback, a_still_picture_is_shown_at_all_times_and_counts_for_nothing_else) {
    picture_pool pool;
    const auto still = pool.make(32, 16);
    std::fill(still->bytes.begin(), still->bytes.end(), std::uint8_t{200});
    ASSERT_TRUE(write_png(*still, folder_ / "board.png"));
    played_.set_vistels(
        {{"still", 0, {{folder_ / "board.png", 0, 0, true}}}, {"a", 1.0, {{folder_ / "long.mp4", 0, 4}}}});
    EXPECT_EQ(played_.first_time(), -1);
    EXPECT_EQ(played_.last_time(), 3);
    for (const double seconds : {-1.0, 0.0, 2.5}) {
        seek(seconds);
        ASSERT_EQ(played_.state("still"), vistel_state::showing) << played_.problem("still").message();
        const auto shown_picture = played_.picture("still");
        EXPECT_EQ(shown_picture->width, 32);
        EXPECT_NEAR(shown_picture->row(8)[4 * 16], 200, 3);
    }
    // Frames are stepped by those of the camera.
    seek(0.5);
    const int before = shown("a");
    step(1);
    EXPECT_EQ(shown("a"), before + 1);
}

TEST_F(playback, seeks_are_exact_by_the_offset_rule) {
    set_both();
    EXPECT_EQ(played_.first_time(), -0.5);
    EXPECT_EQ(played_.last_time(), 5.5);
    struct {
        double seconds;
        int a, b;
    } const cases[] = {{1.0, 30, 45},     {0, 0, 15},       {3.98, 119, -1}, {-0.5, -1, 0},  {2.5, 75, 90},
                       {3.4999, 105, -1}, {3.49, 104, 119}, {4.6, 119, 3},   {5.5, 119, 29}, {-99, -1, 0}};
    for (const auto& c : cases) {
        seek(c.seconds);
        EXPECT_EQ(shown("a"), c.a) << c.seconds;
        EXPECT_EQ(shown("b"), c.b) << c.seconds;
    }
    played_.set_lead("b", 0.25);
    seek(1);
    EXPECT_EQ(shown("b"), 37);
}

// Holds whoever opens a movie, as a volume does that has gone; or whoever makes another call on a file.
class held_volume : public wait_watch {
  public:
    explicit held_volume(std::string_view call = "open movie", std::string file = {})
        : call_(call), file_(std::move(file)) {
        listen(this);
    }
    ~held_volume() override {
        release();
        listen(nullptr);
        while (held_ > 0) std::this_thread::yield();
    }
    bool holds() const { return held_ > 0; }
    int calls() const { return calls_; }
    void release() {
        const std::lock_guard lock(mutex_);
        released_ = true;
        change_.notify_all();
    }

  private:
    void begins(const wait_note& note) override {
        if (note.call() != call_ || (!file_.empty() && note.subject() != file_)) return;
        ++calls_;
        ++held_;
        {
            std::unique_lock lock(mutex_);
            change_.wait_for(lock, std::chrono::duration<double>(wait_seconds), [this] { return released_; });
        }
        --held_;
    }
    void ended(const wait_note&, double) override {}

    const std::string_view call_;
    const std::string file_;
    std::mutex mutex_;
    std::condition_variable change_;
    bool released_ = false;
    std::atomic<int> held_ = 0;
    std::atomic<int> calls_ = 0;
};

TEST_F(playback, a_vistel_goes_while_its_movie_is_still_being_opened) {
    held_volume volume;
    played_.set_vistels({{"a", 0, {{folder_ / "long.mp4", 0, 4}}}, {"b", 0, {}}});
    played_.set_view_size("a", 160, 120);
    played_.seek(1);
    ASSERT_TRUE(wait_for([&] { return volume.holds(); }));
    played_.set_vistels({{"b", 0, {}}});
    EXPECT_TRUE(volume.holds());
    volume.release();
}

TEST_F(playback, the_latest_seek_wins) {
    set_both();
    bool first_done = false;
    played_.seek(3.0, [&] { first_done = true; });
    seek(1.0);
    EXPECT_FALSE(first_done);
    EXPECT_EQ(shown("a"), 30);
}

TEST_F(playback, steps_frame_by_frame_over_groups_of_pictures) {
    set_both();
    seek(2.1);
    for (int frame = 62; frame > 15; --frame) {
        step(-1);
        ASSERT_EQ(shown("a"), frame);
        ASSERT_NEAR(played_.collection_time(), frame / 30.0, 0.001);
    }
    for (int frame = 17; frame < 40; ++frame) {
        step(1);
        ASSERT_EQ(shown("a"), frame);
        ASSERT_EQ(shown("b"), frame + 15);
    }
    seek(0);
    step(-1);
    EXPECT_LT(played_.collection_time(), 0);
    EXPECT_EQ(shown("b"), 14);
}

TEST_F(playback, steps_of_several_frames_add_up) {
    set_both();
    seek(1);
    for (const auto& [frames, shown_after] : {std::pair{7, 37}, {-12, 25}, {30, 55}, {-1, 54}, {-999, -1}}) {
        step(frames);
        EXPECT_EQ(shown("a"), shown_after) << frames;
    }
    EXPECT_EQ(played_.collection_time(), played_.first_time());
    seek(1);
    bool done = false;
    played_.step(6);
    played_.step(9, [&] { done = true; });  // while the first are on their way, or after them
    ASSERT_TRUE(wait_for([&] { return done; }));
    EXPECT_EQ(shown("a"), 45);
    // A seek ends them.
    played_.step(50);
    seek(0.5);
    EXPECT_EQ(shown("a"), 15);
    EXPECT_NEAR(played_.collection_time(), 0.5, 1e-9);
}

TEST_F(playback, a_dragging_hand_sees_key_frames_at_once_and_the_very_frame_when_it_rests) {
    simulated_run_loop loop;
    synchronised_playback played(loop);
    played.set_volume(0);
    played.set_vistels({{"a", 0.0, {{folder_ / "long.mp4", 0, 4}}}});
    played.set_view_size("a", 160, 120);
    const auto frame = [&] { return played.picture("a") ? read_frame_number(*played.picture("a")) : -1; };
    // Key frames lie 20 frames apart.
    const std::pair<double, int> ways[] = {{2.3, 60}, {1.2, 20}, {3.9, 100}, {3.4, 100}, {0.1, 0}};
    for (const auto& [seconds, key] : ways) {
        played.scrub(seconds);
        EXPECT_EQ(played.collection_time(), seconds);
        ASSERT_TRUE(comes_about(loop, [&] { return played.is_settled(); }));
        EXPECT_EQ(frame(), key) << seconds;
    }
    played.scrub(2.5);
    ASSERT_TRUE(comes_about(loop, [&] { return played.is_settled() && frame() == 60; }));
    loop.advance(0.2);
    ASSERT_TRUE(comes_about(loop, [&] { return played.is_settled() && frame() == 75; }));
}

TEST_F(playback, plays_on_and_back_to_the_end_and_stops) {
    set_both();
    for (const double rate : {8.0, -8.0}) {
        seek(rate > 0 ? 3 : 2);
        int changes = 0;
        const auto kept = played_.pictures_changed.connect([&] { ++changes; });
        played_.set_rate(rate);
        played_.play();
        EXPECT_TRUE(played_.is_playing());
        EXPECT_TRUE(played_.timer_runs());
        ASSERT_TRUE(wait_for([&] { return !played_.is_playing() && played_.is_settled(); }));
        EXPECT_EQ(played_.collection_time(), rate > 0 ? played_.last_time() : played_.first_time());
        EXPECT_GT(changes, 0);
        // Frames passed over while playing fast are not left in place of the right one.
        EXPECT_EQ(shown("b"), rate > 0 ? 29 : 0);
        ASSERT_TRUE(wait_for([&] { return !played_.timer_runs(); }));
    }
}

TEST_F(playback, one_unreadable_movie_leaves_the_others_alone) {
    put_file(folder_ / "broken.mp4", "this is no movie");
    played_.set_vistels({{"a", 0.0, {{folder_ / "long.mp4", 0, 4}}},
                         {"missing", 0.0, {{folder_ / "missing.mp4", 0, 4}}},
                         {"broken", 0.0, {{folder_ / "broken.mp4", 0, 4}}},
                         {"empty", 0.0, {}}});
    seek(1);
    EXPECT_EQ(shown("a"), 30);
    for (const char* uuid : {"missing", "broken"}) {
        EXPECT_EQ(played_.state(uuid), vistel_state::unreadable);
        EXPECT_NE(played_.problem(uuid).message().find(std::string(uuid) + ".mp4"), std::string::npos);
        EXPECT_EQ(played_.picture(uuid), nullptr);
    }
    EXPECT_EQ(played_.state("empty"), vistel_state::unreadable);
    played_.set_rate(4);
    played_.play();
    ASSERT_TRUE(wait_for([&] { return !played_.is_playing() && played_.is_settled(); }));
    EXPECT_EQ(shown("a"), 119);
}

TEST_F(playback, pictures_come_in_the_size_asked_for) {
    set_both();
    seek(1);
    EXPECT_EQ(played_.picture("a")->width, 160);
    played_.set_view_size("a", 200, 150);
    ASSERT_TRUE(wait_for([&] { return played_.picture("a")->width == 200; }));
    EXPECT_EQ(shown("a"), 30);
}

// The second one is scrolled away; the first is the one that is stepped by.
TEST_F(playback, what_is_out_of_sight_is_not_read) {
    set_both();
    seek(1);
    EXPECT_EQ(shown("b"), 45);
    played_.set_seen("b", false);
    EXPECT_EQ(played_.picture("b"), nullptr);
    EXPECT_TRUE(played_.is_settled());
    seek(2);
    EXPECT_EQ(shown("a"), 60);
    EXPECT_EQ(played_.picture("b"), nullptr);
    played_.set_seen("b", true);
    EXPECT_NE(shown("b"), 45);  // the old one would pass for the one of this time
    ASSERT_TRUE(wait_for([&] { return played_.is_settled(); }));
    EXPECT_EQ(shown("b"), 75);
    played_.set_seen("a", false);
    step(1);
    EXPECT_EQ(shown("a"), 61);
    EXPECT_NEAR(played_.collection_time(), 61 / 30.0, 0.001);
    played_.set_rate(4);
    played_.play();
    EXPECT_EQ(played_.picture("a"), nullptr);
    ASSERT_TRUE(wait_for([&] { return !played_.is_playing() && played_.is_settled(); }));
    EXPECT_EQ(shown("b"), 29);
    EXPECT_EQ(shown("a"), 119);
}

TEST_F(playback, a_seek_with_tolerance_takes_what_is_near) {
    struct {
        double seconds, tolerance;
        int frame;  // of the first vistel; key frames are 20 frames apart
    } const cases[] = {{2.3, 1, 60}, {2.3, 0.2, 63}, {1.2, 0.15, 33}, {2.3, 0, 69}};
    for (const auto& c : cases) {
        synchronised_playback fresh(loop_);
        fresh.set_volume(0);
        fresh.set_vistels({{"a", 0.0, {{folder_ / "long.mp4", 0, 4}}}});
        fresh.set_view_size("a", 160, 120);
        int done = 0;
        fresh.seek({c.seconds, c.tolerance, "test"}, [&] { ++done; });
        ASSERT_TRUE(wait_for([&] { return done == 1; }));
        const int frame = read_frame_number(*fresh.picture("a"));
        EXPECT_LE(frame, c.seconds * 30 + 0.01) << c.tolerance;
        EXPECT_GE(frame, (c.seconds - c.tolerance) * 30 - 1.01) << c.tolerance;
        if (c.tolerance == 1 || c.tolerance == 0) {
            EXPECT_EQ(frame, c.frame);
        }
        EXPECT_TRUE(fresh.is_settled());
        // Exactly, when that is asked for.
        fresh.seek(c.seconds, [&] { ++done; });
        ASSERT_TRUE(wait_for([&] { return done == 2; }));
        EXPECT_EQ(read_frame_number(*fresh.picture("a")), static_cast<int>(c.seconds * 30 + 0.01));
    }
}

TEST_F(playback, one_vistel_is_sought_alone_and_comes_back_to_the_clock) {
    set_both();
    seek(1);
    std::vector<int> seen;
    const auto kept = played_.pictures_changed.connect([&] { seen.push_back(shown("b")); });
    bool done = false;
    played_.seek_vistel("b", {2.2, 0, "test"}, [&] { done = true; });
    EXPECT_EQ(played_.seek_source("b"), "test");
    ASSERT_TRUE(wait_for([&] { return done; }));
    EXPECT_EQ(shown("b"), 81);
    EXPECT_EQ(played_.seek_source("b"), "");
    EXPECT_FALSE(played_.is_settled());
    ASSERT_TRUE(wait_for([&] { return played_.is_settled(); }));
    EXPECT_EQ(shown("b"), 45);
    EXPECT_EQ(shown("a"), 30);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), 81), 1);
    // A seek of all takes its place, and is told in turn; what is cancelled is not.
    done = false;
    played_.seek_vistel("b", {3, 0, "test"}, [&] { done = true; });
    seek(0.5);
    EXPECT_EQ(shown("b"), 30);
    played_.seek(2, [&] { done = true; });
    played_.cancel_seeks();
    ASSERT_TRUE(wait_for([&] { return played_.is_settled() && shown("b") == 75; }));
    EXPECT_FALSE(done);
}

// The second vistel's volume answers no more while the first plays on for three seconds at double rate.
TEST_F(playback, a_vistel_that_lags_is_brought_near_the_leader_before_anything_else) {
    const std::string slow = folder_ / "slow.mp4";
    const std::string quick = folder_ / "quick.mp4";
    ASSERT_TRUE(write_small_coded_movie(slow, 300, 30).ok());
    ASSERT_TRUE(write_small_coded_movie(quick, 300, 30).ok());
    for (const double rate : {2.0, -2.0}) {
        simulated_run_loop loop;
        synchronised_playback played(loop);
        played.set_volume(0);
        const auto frame_of = [&](const char* uuid) {
            return played.picture(uuid) ? read_frame_number(*played.picture(uuid)) : -1;
        };
        const auto wait_until = [&](const std::function<bool()>& done) { return comes_about(loop, done); };
        // The last one is over, or has not begun, and is in nobody's way.
        played.set_vistels({{"quick", 0, {{quick, 0, 10}}, 1},
                            {"slow", 0.5, {{slow, 0, 10}}, 2},
                            {"over", rate > 0 ? 9.5 : -9.5, {{quick, 0, 10}}, 3}});
        for (const char* uuid : {"quick", "slow", "over"}) played.set_view_size(uuid, 160, 120);
        played.set_rate(rate);
        played.seek(rate > 0 ? 1 : 9);
        ASSERT_TRUE(wait_until([&] { return played.is_settled(); }));
        played.play();
        held_volume volume("read movie", slow);
        std::vector<int> seen;
        // The slow one has some frames left, and then none.
        for (int tick = 0; tick < 60 * 4; ++tick) {
            loop.advance(1.0 / 60);
            ASSERT_TRUE(wait_until([&] { return played.state("quick") == vistel_state::showing; }));
            if (played.corrections() > 0) break;
        }
        ASSERT_EQ(played.corrections(), 1);
        EXPECT_EQ(played.correction_note(), time_fix_note);
        EXPECT_EQ(played.seek_source("slow"), lag_move_source);
        EXPECT_EQ(played.seek_source("over"), "");
        const double now = played.shown_time();
        const auto kept = played.pictures_changed.connect([&] { seen.push_back(frame_of("slow")); });
        loop.advance(1.0 / 60);  // the next tick leaves it to the correction
        EXPECT_EQ(played.seek_source("slow"), lag_move_source);
        volume.release();
        ASSERT_TRUE(wait_until([&] { return played.seek_source("slow").empty(); }));
        const double frame = (now + 0.5) * 30;
        EXPECT_NEAR(frame_of("slow"), frame, 31);
        EXPECT_EQ(frame_of("slow") % 30, 0) << frame_of("slow");  // the key frame, which comes first
        loop.advance(1.0 / 60);
        ASSERT_TRUE(wait_until([&] { return played.is_settled(); }));
        EXPECT_NEAR(frame_of("slow"), (played.shown_time() + 0.5) * 30, 1.01);
    }
}

// The volume of one of two vistels hangs, at the opening of its movie or in the middle of it.
TEST_F(playback, a_vistel_that_does_not_answer_is_left_to_itself_and_comes_back) {
    const std::string there = folder_ / "there.mp4";
    ASSERT_TRUE(write_small_coded_movie(there, 900, 30).ok());
    for (const char* const call : {"open movie", "read movie"}) {
        // One of its own: what was left before may still be at the other.
        const std::string away = folder_ / (std::string(call) + " away.mp4");
        std::filesystem::copy_file(there, away);
        simulated_run_loop loop;
        auto played = std::make_unique<synchronised_playback>(loop, frame_budget::of_program(), &loop.time());
        played->set_volume(0);
        const auto frame_of = [&](const char* uuid) {
            return played->picture(uuid) ? read_frame_number(*played->picture(uuid)) : -1;
        };
        auto volume = std::make_unique<held_volume>(call, away);
        const auto run = [&](double seconds) {
            for (int tick = 0; tick < seconds * 20; ++tick) {
                loop.advance(0.05);
                // However slow this machine is, it is not the one that hangs.
                ASSERT_TRUE(comes_about(loop,
                                        [&] {
                                            return played->state("there") == vistel_state::showing &&
                                                   !played->is_reading("there");
                                        }))
                    << call << " " << played->shown_time() << " " << played->problem("there").message()
                    << " state " << static_cast<int>(played->state("there")) << " calls " << volume->calls();
                ASSERT_NEAR(frame_of("there"), played->shown_time() * 30, 1.01);
            }
        };
        played->set_vistels({{"there", 0, {{there, 0, 30}}, 1}, {"away", 0, {{away, 0, 30}}, 2}});
        for (const char* uuid : {"there", "away"}) played->set_view_size(uuid, 160, 120);
        played->play();
        ASSERT_TRUE(comes_about(loop, [&] { return volume->holds(); }));
        run(4.4);
        EXPECT_FALSE(played->problem("away")) << call;
        run(1.6);
        EXPECT_TRUE(played->problem("away").is(movie_does_not_answer)) << call;
        EXPECT_NE(played->problem("away").message().find("away.mp4"), std::string::npos);
        EXPECT_EQ(played->state("away"), vistel_state::unreadable);
        EXPECT_EQ(volume->calls(), 1);
        run(10);
        EXPECT_TRUE(played->problem("away").is(movie_does_not_answer)) << call;  // as long as nothing comes
        ASSERT_TRUE(comes_about(loop, [&] { return volume->calls() == 2; })) << call;
        volume->release();
        ASSERT_TRUE(comes_about(loop, [&] { return !played->is_reading("away"); }));
        run(0.3);
        ASSERT_TRUE(comes_about(loop, [&] { return played->state("away") == vistel_state::showing; }))
            << call;
        EXPECT_FALSE(played->problem("away"));
        ASSERT_TRUE(comes_about(loop, [&] { return played->is_settled(); }));
        EXPECT_EQ(frame_of("away"), frame_of("there"));
        // Who closes waits for nobody.
        volume.reset();
        volume = std::make_unique<held_volume>("read movie", away);
        played->seek(2);
        ASSERT_TRUE(comes_about(loop, [&] { return volume->holds(); }));
        run(1.2);
        // What it showed before the seek leads nobody.
        EXPECT_EQ(played->corrections(), 0);
        played.reset();
        EXPECT_TRUE(volume->holds());
        volume.reset();
    }
}

TEST_F(playback, a_movie_that_goes_or_is_cut_off_is_told_and_comes_back) {
    namespace fs = std::filesystem;
    const std::string path = folder_ / "moved.mp4";
    const std::string elsewhere = folder_ / "elsewhere.mp4";
    fs::copy_file(folder_ / "long.mp4", path);
    simulated_run_loop loop;
    synchronised_playback played(loop);
    played.set_volume(0);
    played.set_vistels({{"a", 0, {{folder_ / "long.mp4", 0, 4}}}, {"b", 0, {{path, 0, 4}}}});
    for (const char* uuid : {"a", "b"}) played.set_view_size(uuid, 160, 120);
    played.set_rate(0.1);
    played.play();
    const auto becomes = [&](vistel_state state) {
        return comes_about(loop, [&] {
            loop.advance(0.01);
            if (!played.is_playing()) {  // this clock is faster than the machine
                played.seek(0.5);
                played.play();
            }
            return played.state("b") == state;
        });
    };
    for (const bool is_cut : {false, true}) {
        played.seek(0.5);
        ASSERT_TRUE(becomes(vistel_state::showing));
        if (is_cut) {
            fs::copy_file(path, elsewhere);
            fs::resize_file(path, 1000);
        } else {
            fs::rename(path, elsewhere);
        }
        ASSERT_TRUE(becomes(vistel_state::unreadable)) << is_cut;
        EXPECT_EQ(played.problem("b").is(movie_is_gone), !is_cut);
        EXPECT_NE(played.problem("b").message().find("moved.mp4"), std::string::npos);
        ASSERT_TRUE(comes_about(loop, [&] { return played.state("a") == vistel_state::showing; }));
        fs::rename(elsewhere, path);
        ASSERT_TRUE(becomes(vistel_state::showing)) << is_cut;
        EXPECT_FALSE(played.problem("b"));
    }
}

TEST_F(playback, goes_away_in_the_middle_of_work) {
    bool is_gone = false;
    for (int i = 0; i < 20; ++i) {
        is_gone = false;
        {
            synchronised_playback short_lived(loop_);
            short_lived.set_vistels({{"a", 0.0, {{folder_ / "long.mp4", 0, 4}}}});
            short_lived.seek(i * 0.1, [&] { EXPECT_FALSE(is_gone); });
        }
        is_gone = true;
        loop_.run_until([] { return false; }, 0);
    }
}

}  // namespace
}  // namespace vistels

#endif
