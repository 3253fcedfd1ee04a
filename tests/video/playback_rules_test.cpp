// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>

#include "util/simulated_run_loop.h"
#include "video/collection_clock.h"
#include "video/playback_frame_cache.h"
#include "video/playback_rules.h"

namespace vistels {
namespace {

TEST(playback_rules, top_speed_stays_within_bounds) {
    const double cases[][2] = {{100, 64}, {-20, -8}, {64, 64}, {2, 2}, {-8, -8}, {-0.5, -0.5}};
    for (const auto& [stored, used] : cases) EXPECT_EQ(clamped_top_speed(stored), used);
}

TEST(playback_rules, timer_stops_after_the_31st_tick_without_movement) {
    playback_timer_record record;
    EXPECT_TRUE(record.tick(1.0));
    for (int round = 0; round < 2; ++round) {
        for (int tick = 1; tick <= 30; ++tick) ASSERT_TRUE(record.tick(1.0 + round)) << tick;
        ASSERT_TRUE(record.tick(std::nullopt));
        if (round == 0) {
            ASSERT_TRUE(record.tick(2.0));
        }
    }
    EXPECT_FALSE(record.tick(2.0));
}

lagging_vistel at(double seconds) {
    lagging_vistel made;
    made.seconds = seconds;
    made.is_playing = true;
    return made;
}

TEST(playback_rules, those_that_lag_are_moved_to_the_leader) {
    const auto moved = [](std::vector<lagging_vistel> vistels) {
        std::vector<double> to;
        for (const auto& move : advance_lagging_players(vistels, 50)) to.push_back(move.to_seconds);
        return to;
    };
    using list = std::vector<double>;
    EXPECT_EQ(moved({}), list{});
    EXPECT_EQ(moved({at(10), at(5.1)}), list{});        // 4.9 s
    EXPECT_EQ(moved({at(10), at(4.9)}), (list{10.0}));  // 5.1 s
    EXPECT_EQ(moved({at(0), at(20), at(1)}), (list{20.0, 20.0}));
    auto inserted = at(0);
    inserted.number = 100001;
    EXPECT_EQ(moved({at(10), inserted}), list{});
    EXPECT_EQ(moved({inserted, at(100), at(10)}), (list{100.0}));
    auto overlay = at(100);
    overlay.has_overlay = true;
    EXPECT_EQ(moved({overlay, at(1), at(2)}), list{});
    auto away = at(100);
    away.is_away = true;
    EXPECT_EQ(moved({at(1), away, at(7)}), (list{7.0}));
    EXPECT_EQ(moved({away, at(2)}), list{});
    auto unknown = at(0);
    unknown.seconds.reset();
    EXPECT_EQ(moved({at(10), unknown}), list{});
    auto standing = at(0);
    standing.is_playing = false;
    EXPECT_EQ(moved({at(10), standing}), list{});
}

TEST(playback_rules, a_vistel_is_looked_at_once_a_second) {
    std::vector<lagging_vistel> vistels{at(10), at(0)};
    EXPECT_EQ(advance_lagging_players(vistels, 50).size(), 1U);
    EXPECT_EQ(advance_lagging_players(vistels, 50.9).size(), 0U);
    EXPECT_EQ(advance_lagging_players(vistels, 51).size(), 1U);
}

TEST(playback_rules, a_clip_that_is_played_stands_at_a_fraction_of_it) {
    const double cases[][5] = {
        // start, end, seconds, fraction, still to play
        {10, 14, 11, 0.25, 3}, {10, 14, 9, 0, 4},  {10, 14, 15, 1, 0},
        {10, 10, 10, 0, 0},    {10, 10, 11, 1, 0}, {10, 10.0001, 10.0005, 0.5, 0.00005},
    };
    for (const auto& [start, end, seconds, fraction, left] : cases) {
        EXPECT_NEAR(fraction_at(start, end, seconds), fraction, 1e-9) << seconds;
        EXPECT_NEAR(seconds_still_to_play(start, end, fraction), left, 1e-9) << seconds;
    }
    EXPECT_EQ(fraction_within(-0.1), 0);
    EXPECT_EQ(fraction_within(1.1), 1);
    EXPECT_EQ(fraction_within(std::nan("")), 0);
    EXPECT_EQ(seconds_still_to_play(2, 4, 7), 0);
}

TEST(collection_clock, runs_by_rate_within_its_range) {
    simulated_run_loop loop;
    collection_clock time(loop.time());
    time.set_range(-2, 10);
    time.seek(-5);
    EXPECT_EQ(time.time(), -2);
    time.seek(1);
    loop.advance(3);
    EXPECT_EQ(time.time(), 1);  // stands still
    time.play();
    loop.advance(2);
    EXPECT_DOUBLE_EQ(time.time(), 3);
    time.set_rate(0.5);
    loop.advance(2);
    EXPECT_DOUBLE_EQ(time.time(), 4);
    EXPECT_DOUBLE_EQ(time.time_at(loop.time().seconds() - 3), 2);  // before the rate changed
    time.set_rate(-2);
    loop.advance(100);
    EXPECT_EQ(time.time(), -2);
    EXPECT_FALSE(time.can_move());
    time.set_rate(2);
    EXPECT_TRUE(time.can_move());
    time.pause();
    loop.advance(1);
    EXPECT_EQ(time.time(), -2);
}

TEST(collection_clock, follows_another_without_jumping) {
    for (const double rate : {1.0, 2.0}) {
        for (const double error : {-0.04, 0.03, 2.0, -2.0}) {
            simulated_run_loop loop;
            collection_clock time(loop.time());
            time.set_range(0, 1000);
            time.set_rate(rate);
            time.play();
            double last = 0;
            for (int i = 0; i < 400; ++i) {
                loop.advance(0.2);
                const double now = time.time();
                const double moved = (now - last) / (0.2 * rate);
                EXPECT_GE(moved, 0.9499);
                EXPECT_LE(moved, 1.0501);
                last = now;
                time.follow(loop.time().seconds() * rate + error);
            }
            EXPECT_NEAR(time.time() - loop.time().seconds() * rate, error, 0.003);
        }
    }
}

// What nobody hears leaves the time as even as the ticks that ask for it.
TEST(collection_clock, is_not_disturbed_by_a_small_difference) {
    simulated_run_loop loop;
    collection_clock time(loop.time());
    time.set_range(0, 1000);
    time.play();
    for (int i = 1; i <= 1000; ++i) {
        loop.advance(0.02);
        time.follow(time.time() + (i % 2 == 0 ? 0.012 : -0.012));
        ASSERT_NEAR(time.time(), i * 0.02, 1e-9);
    }
}

TEST(collection_clock, shows_no_time_from_before_a_jump) {
    simulated_run_loop loop;
    collection_clock time(loop.time());
    time.set_range(0, 100);
    time.play();
    loop.advance(10.01);
    EXPECT_DOUBLE_EQ(time.time_to_show(10), 10);
    time.seek(50);
    EXPECT_DOUBLE_EQ(time.time_to_show(10), 50);
    time.set_rate(2);
    loop.advance(1);
    EXPECT_DOUBLE_EQ(time.time_to_show(11), 51.98);
}

picture_pointer frame(std::int64_t stamp, std::int64_t until, bool last = false, bool sparse = false) {
    auto made = std::make_shared<picture>();
    made->stamp = stamp;
    made->until_stamp = until;
    made->last = last;
    made->sparse = sparse;
    made->bytes.resize(100);
    return made;
}

TEST(playback_frame_cache, knows_what_stands_when) {
    playback_frame_cache cache;
    for (const auto& made : {frame(0, 10), frame(10, 30), frame(50, 60), frame(60, 70, true)})
        cache.insert(made);
    const std::int64_t cases[][2] = {{-1, -1}, {0, 0},   {9, 0},   {10, 10}, {29, 10},
                                     {30, -1}, {49, -1}, {55, 50}, {999, 60}};
    for (const auto& [asked, stamp] : cases) {
        const auto found = cache.at(asked);
        EXPECT_EQ(found ? found->stamp : -1, stamp) << asked;
    }
    EXPECT_EQ(cache.at_or_before(40)->stamp, 10);
    const auto first = cache.run_at(12);
    EXPECT_EQ(first.from, 0);
    EXPECT_EQ(first.until, 30);
    EXPECT_EQ(first.frames_before, 1U);
    EXPECT_EQ(first.frames_after, 0U);
    EXPECT_FALSE(first.reaches_end);
    EXPECT_TRUE(cache.run_at(50).reaches_end);
}

// What stands over others takes their place, or it would never be found between them.
TEST(playback_frame_cache, holds_what_was_read_last_of_a_damaged_movie) {
    const struct {
        picture_pointer read;
        std::int64_t held_after;
    } cases[] = {{frame(10, 60), 60}, {frame(10, 15, true), -1}, {frame(10, 20), 20}};
    for (const auto& c : cases) {
        playback_frame_cache cache;
        for (int i = 0; i < 8; ++i) cache.insert(frame(i * 10, i * 10 + 10));
        cache.insert(c.read);
        for (const std::int64_t asked : {10, 14, 19}) {
            ASSERT_TRUE(cache.at(asked) || asked >= c.read->until_stamp) << asked;
        }
        EXPECT_EQ(cache.at(c.read->last ? 999 : c.read->until_stamp - 1), c.read);
        EXPECT_EQ(cache.bytes(), c.held_after < 0 ? 200U : (8U - (c.held_after - 20) / 10) * 100);
        if (c.held_after > 0) {
            EXPECT_EQ(cache.at(c.held_after)->stamp, c.held_after);
        }
    }
}

TEST(playback_frame_cache, forgets_the_farthest_first) {
    struct {
        std::size_t before, after;  // of the frame that stands at 46
        std::int64_t first, last;
    } const cases[] = {{0, 0, 30, 60}, {9, 9, 30, 60}, {0, 3, 40, 70}, {2, 0, 20, 50}, {3, 0, 10, 40}};
    for (const auto& c : cases) {
        playback_frame_cache cache;
        for (int i = 0; i < 10; ++i) cache.insert(frame(i * 10, i * 10 + 10, false, i == 5));
        EXPECT_EQ(cache.bytes(), 1000U);
        cache.keep_within(400, 46, c.before, c.after);
        EXPECT_EQ(cache.bytes(), 400U);
        EXPECT_TRUE(cache.at(46));
        EXPECT_TRUE(cache.at(c.first)) << c.before;
        EXPECT_TRUE(cache.at(c.last)) << c.before;
        cache.forget_sparse();
        EXPECT_FALSE(cache.at(50));
    }
}

}  // namespace
}  // namespace vistels
