// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <vector>

#include "video/synchronised_playback.h"

#if VISTELS_HAVE_MEDIA

#include "support/held_volume.h"
#include "support/played_cameras.h"
#include "support/run_until.h"
#include "util/simulated_run_loop.h"
#include "video/collection_failures.h"

namespace vistels {
namespace {

using namespace vistels::testing;

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

}  // namespace
}  // namespace vistels

#endif
