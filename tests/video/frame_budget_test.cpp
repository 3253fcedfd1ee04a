// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/frame_budget.h"

#include <gtest/gtest.h>

#if VISTELS_HAVE_MEDIA

#include "support/coded_movie.h"
#include "support/counted_memory.h"
#include "support/temporary_folder.h"
#include "util/plain_run_loop.h"
#include "video/synchronised_playback.h"

namespace vistels {
namespace {

using namespace vistels::testing;

constexpr double wait_seconds = 60;
constexpr int width = 640;
constexpr int height = 480;
constexpr std::size_t frame_bytes = std::size_t{width} * height * 4;
constexpr std::size_t other_objects = 2 << 20;                      // what there is beside pictures ...
constexpr std::size_t of_each_vistel = std::size_t{320} * 240 * 4;  // ... to scale the movie's frames
constexpr unsigned last_frame = 119;

class shared_budget : public ::testing::Test {
  protected:
    shared_budget() { EXPECT_TRUE(write_small_coded_movie(folder_ / "long.mp4", last_frame + 1, 40).ok()); }

    // Counts from here on what objects take, pictures above all: nobody is asked what he thinks he holds.
    void use(std::size_t budget_frames) {
        budget_ = std::make_shared<frame_budget>(budget_frames * frame_bytes);
        before_ = objects_in_use;
        most_objects = before_;
    }
    std::size_t taken() const { return objects_in_use - before_; }
    std::size_t most_taken() const { return most_objects - before_; }

    std::unique_ptr<synchronised_playback> open(int vistels) {
        auto made = std::make_unique<synchronised_playback>(loop_, budget_);
        made->set_volume(0);
        std::vector<playback_vistel> all;
        for (int i = 0; i < vistels; ++i)
            all.push_back({std::to_string(i), 0, {{folder_ / "long.mp4", 0, 4}}});
        made->set_vistels(all);
        for (const auto& one : all) made->set_view_size(one.uuid, width, height);
        return made;
    }

    bool wait_for(const std::function<bool()>& done) { return loop_.run_until(done, wait_seconds); }

    void seek(synchronised_playback& played, int frame) {
        bool done = false;
        played.seek((frame + 0.5) / 30, [&] { done = true; });
        ASSERT_TRUE(wait_for([&] { return done; }));
    }

    void step(synchronised_playback& played, int direction) {
        bool done = false;
        played.step(direction, [&] { done = true; });
        ASSERT_TRUE(wait_for([&] { return done; }));
    }

    static void expect_shown(const synchronised_playback& played, int vistels, int frame) {
        for (int i = 0; i < vistels; ++i) {
            const auto shown = played.picture(std::to_string(i));
            ASSERT_TRUE(shown) << i;
            EXPECT_EQ(read_frame_number(*shown), frame) << i;
        }
    }

    // Forwards, backwards, at rest and stepping, each way over more than one group of pictures.
    void use_in_all_ways(synchronised_playback& played, int vistels) {
        seek(played, 60);
        expect_shown(played, vistels, 60);
        for (int frame = 59; frame > 52; --frame) {
            step(played, -1);
            expect_shown(played, vistels, frame);
        }
        for (const double rate : {-4.0, 4.0}) {
            played.set_rate(rate);
            played.play();
            ASSERT_TRUE(wait_for([&] { return std::abs(played.collection_time() - 2) > 1; }));
            played.pause();
            seek(played, 70);
            expect_shown(played, vistels, 70);
        }
        step(played, 1);
        expect_shown(played, vistels, 71);
    }

    temporary_folder folder_;
    plain_run_loop loop_;
    std::shared_ptr<frame_budget> budget_;
    std::size_t before_ = 0;
};

TEST_F(shared_budget, holds_for_all_vistels_of_all_events_and_keeps_none_from_its_frame) {
    struct {
        int events, vistels;         // of each event
        std::size_t budget, within;  // in frames
    } const cases[] = {
        {1, 2, 200, 200},  // enough for everything
        {1, 16, 64, 64},   // four frames each
        {2, 6, 48, 48},    //
        {1, 4, 8, 8},      // the one that is shown and the one that is made
        {1, 4, 1, 4 * 3},  // less than what is shown: nobody waits for anybody
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.events) + " of " + std::to_string(c.vistels));
        use(c.budget);
        {
            std::vector<std::unique_ptr<synchronised_playback>> events;
            for (int i = 0; i < c.events; ++i) events.push_back(open(c.vistels));
            for (const auto& played : events) use_in_all_ways(*played, c.vistels);
            EXPECT_GE(taken(), static_cast<std::size_t>(c.events * c.vistels) * frame_bytes);
        }
        const auto beside = static_cast<std::size_t>(c.events * c.vistels) * of_each_vistel;
        EXPECT_LE(most_taken(), c.within * frame_bytes + beside + other_objects);
        EXPECT_EQ(budget_->held(), 0U);
    }
}

TEST_F(shared_budget, a_share_comes_back_from_an_event_that_goes_and_from_vistels_that_rest) {
    constexpr std::size_t frames = 60;
    use(frames);
    const auto first = open(2);
    auto second = open(2);
    for (auto* const played : {first.get(), second.get()}) {
        seek(*played, 100);
        step(*played, -1);
    }
    const auto is_within = [&](std::size_t least, std::size_t most) {
        return taken() >= least * frame_bytes && taken() <= most * frame_bytes + other_objects;
    };
    ASSERT_TRUE(wait_for([&] { return is_within(frames / 2, frames); }));
    // The first one, which had no more than half, reads on by itself with what the second had.
    second.reset();
    ASSERT_TRUE(wait_for([&] { return is_within(frames / 2 + 3, frames); }));
    // In the background only what is shown stays; out of sight nothing does.
    first->set_in_front(false);
    ASSERT_TRUE(wait_for([&] { return is_within(2, 4); }));
    expect_shown(*first, 2, 99);
    first->set_seen("1", false);
    ASSERT_TRUE(wait_for([&] { return is_within(1, 2); }));
    expect_shown(*first, 1, 99);
    first->set_in_front(true);
    ASSERT_TRUE(wait_for([&] { return taken() > 10 * frame_bytes; }));
    first->set_seen("1", true);
    ASSERT_TRUE(wait_for([&] { return first->is_settled(); }));
    expect_shown(*first, 2, 99);
    EXPECT_LE(most_taken(), frames * frame_bytes + other_objects);
}

// What is fetched must never push out what was fetched before and is still wanted.
TEST_F(shared_budget, reading_comes_to_rest_however_little_there_is) {
    constexpr int side = 160;
    const std::size_t bytes = picture_bytes(side, side);
    const playback_demand demands[] = {
        {.rate = 0},    {.rate = 0, .direction = -1}, {.rate = 1}, {.rate = 16}, {.rate = -1}, {.rate = -8},
        {.alone = true}};
    for (const std::size_t frames : {0U, 1U, 2U, 3U, 4U, 5U, 7U, 12U, 30U, 100U}) {
        const auto pool = std::make_shared<picture_pool>();
        pool->keep_within(frames * bytes);
        playback_movie movie(folder_ / "long.mp4", pool);
        for (int number : {50, 49, 110, 111}) {
            for (auto demand : demands) {
                demand.width = demand.height = side;
                demand.memory = frames * bytes;
                demand.seconds = number / 30.0;
                int pieces = 0;
                while (movie.work(demand) != playback_movie::progress::nothing_to_do) {
                    ASSERT_LT(++pieces, 1000) << frames << ", " << number << ", " << demand.rate;
                }
                const auto shown = movie.frame_at(demand.seconds);
                ASSERT_TRUE(shown) << frames << ", " << number << ", " << demand.rate;
                if (!shown->sparse) {
                    EXPECT_EQ(read_frame_number(*shown), number);
                }
            }
        }
    }
}

}  // namespace
}  // namespace vistels

#endif
