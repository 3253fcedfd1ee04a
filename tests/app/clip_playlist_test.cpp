// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/clip_playlist.h"

#include <gtest/gtest.h>

#include "util/simulated_run_loop.h"
#include "video/collection_clock.h"

namespace vistels {

namespace {

// Playback without pictures.
class plain_playback final : public transport {
  public:
    explicit plain_playback(const clock& source) : clock_(source) { clock_.set_range(0, 1000); }
    double collection_time() const override { return clock_.time(); }
    double collection_time_at(double seconds) const override { return clock_.time_at(seconds); }
    bool is_playing() const override { return clock_.is_playing() && clock_.can_move(); }
    double rate() const override { return clock_.rate(); }
    void play() override { clock_.play(); }
    void pause() override { clock_.pause(); }
    void set_rate(double rate) override { clock_.set_rate(rate); }
    void seek(double seconds) override {
        clock_.seek(seconds);
        ++seeks;
    }
    int seeks = 0;

  private:
    collection_clock clock_;
};

struct listening {
    simulated_run_loop loop;
    plain_playback playback{loop.time()};
    display_tick ticks{loop};
    clip_playlist list{playback, ticks, loop.time()};
};

// What plays in the middle of each second.
std::string played(listening& all, std::size_t seconds) {
    std::string heard;
    all.loop.advance(0.5);
    for (std::size_t passed = 0; passed < seconds; ++passed) {
        heard += all.list.is_playing() ? all.list.current() : "-";
        all.loop.advance(1);
    }
    return heard;
}

TEST(clip_playlist, plays_each_clip_and_nothing_twice) {
    struct example {
        std::vector<playlist_clip> clips;
        const char* heard;
        int seeks;
        double ends_at;
    };
    const std::vector<example> examples{
        {{{"a", 10, 13}, {"b", 50, 52}}, "aaabb--", 2, 52},
        // One that begins before the other ends goes on where it stands.
        {{{"a", 10, 14}, {"b", 12, 16}}, "aaaabb--", 1, 16},
        // One that is over by then is passed over.
        {{{"a", 10, 15}, {"b", 11, 13}, {"c", 30, 31}}, "aaaaac--", 2, 31},
        {{{"a", 10, 12}, {"b", 12, 14}}, "aabb--", 1, 14},
        // At the end of the collection playing stops by itself.
        {{{"a", 998, 1005}, {"b", 999, 1006}}, "aa--", 1, 1000},
        {{}, "--", 0, 0},
    };
    for (const auto& one : examples) {
        listening all;
        all.list.play(one.clips);
        EXPECT_EQ(played(all, std::string(one.heard).size()), one.heard);
        EXPECT_EQ(all.playback.seeks, one.seeks) << one.heard;
        EXPECT_FALSE(all.playback.is_playing());
        EXPECT_NEAR(all.playback.collection_time(), one.ends_at, 0.05);
    }
}

TEST(clip_playlist, leads_in_and_halts_at_pause_points) {
    {
        // Of what was played just now nothing comes again; where it is told to begin there is no lead-in.
        listening all;
        all.list.play({{"a", 10, 12}, {"b", 13, 15}, {"c", 20, 21}}, {}, 2);
        EXPECT_EQ(all.playback.collection_time(), 8);
        EXPECT_EQ(played(all, 12), "aaaabbbccc--");
        EXPECT_EQ(all.playback.seeks, 2);
        all.list.play({{"a", 10, 12}}, 11, 2);
        EXPECT_EQ(all.playback.collection_time(), 11);
    }
    const std::vector<playlist_clip> clips{{"a", 10, 13, {{12, false}, {11, false}, {9, false}, {13, false}}},
                                           {"b", 20, 22, {{20.5, false}}}};
    for (const double rate : {0.1, 1.0, 64.0}) {
        listening all;
        all.playback.set_rate(rate);
        all.list.play(clips, {}, 1.5);
        for (const double halt : {11.0, 12.0, 20.5}) {
            all.loop.advance(100);
            EXPECT_TRUE(all.list.is_playing());
            EXPECT_FALSE(all.playback.is_playing());
            EXPECT_DOUBLE_EQ(all.playback.collection_time(), halt) << rate;
            all.playback.play();
        }
        all.loop.advance(100);
        EXPECT_FALSE(all.list.is_playing());
        EXPECT_NEAR(all.playback.collection_time(), 22, rate * 0.05);
    }
    // A person who goes away from there ends the list.
    for (const bool plays : {false, true}) {
        listening all;
        all.list.play(clips);
        all.loop.advance(5);
        all.playback.seek(5);
        if (plays) all.playback.play();
        all.loop.advance(1);
        EXPECT_FALSE(all.list.is_playing());
        EXPECT_EQ(all.playback.is_playing(), plays);
    }
}

TEST(clip_playlist, ends_when_a_person_takes_over) {
    const std::vector<playlist_clip> clips{{"a", 10, 20}, {"b", 50, 60}};
    {
        listening all;
        all.list.play(clips);
        all.loop.advance(2);
        all.playback.pause();
        all.loop.advance(1);
        EXPECT_FALSE(all.list.is_playing());
        EXPECT_NEAR(all.playback.collection_time(), 12, 0.05);
    }
    for (const double to : {5.0, 17.0, 100.0}) {
        listening all;
        all.list.play(clips);
        all.loop.advance(2);
        all.playback.seek(to);
        all.loop.advance(1);
        EXPECT_FALSE(all.list.is_playing());
        EXPECT_TRUE(all.playback.is_playing());
        EXPECT_NEAR(all.playback.collection_time(), to + 1, 0.05);
    }
    {
        listening all;
        all.list.play(clips);
        all.loop.advance(2);
        all.playback.set_rate(2);  // a person may play faster
        all.loop.advance(2);
        EXPECT_EQ(all.list.current(), "a");
        all.loop.advance(3);
        EXPECT_EQ(all.list.current(), "b");
        all.playback.set_rate(-1);
        all.loop.advance(1);
        EXPECT_FALSE(all.list.is_playing());
    }
}

TEST(clip_playlist, begins_where_it_is_told_to_and_tells_of_each_clip) {
    listening all;
    std::string told;
    const auto heard =
        all.list.changed.connect([&] { told += all.list.is_playing() ? all.list.current() : "-"; });
    all.list.play({{"a", 10, 13}, {"b", 20, 23}, {"c", 30, 33}}, 21);
    EXPECT_EQ(all.playback.collection_time(), 21);
    EXPECT_EQ(played(all, 7), "bbccc--");
    EXPECT_EQ(told, "bc-");
    all.list.play({{"a", 10, 13}}, 14);
    EXPECT_FALSE(all.list.is_playing() || all.playback.is_playing());
}

}  // namespace

}  // namespace vistels
