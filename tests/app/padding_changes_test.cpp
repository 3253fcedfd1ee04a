// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/padding_changes.h"
#include "app/vaults/home_vault.h"

#include <gtest/gtest.h>

#if VISTELS_HAVE_MEDIA

#include <filesystem>

#include "app/event/offset_changes.h"
#include "app/event/open_event.h"
#include "app/event/part_changes.h"
#include "app/event/vistel_changes.h"
#include "support/coded_movie.h"
#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "util/file_system.h"
#include "util/plain_run_loop.h"
#include "video/synchronised_playback.h"
#include "video/video_coll_Files.h"
#include "video/video_coll_LOAD.h"

namespace vistels {
namespace {

namespace fs = std::filesystem;
using namespace vistels::testing;

constexpr double wait_seconds = 120;

// Three cameras whose frames say which they are; the second one's movie has a second part of 1 second. Clips
// at times where they show something.
class filmed_event : public ::testing::Test {
  protected:
    filmed_event() {
        EXPECT_TRUE(write_small_coded_movie(home / "long.mp4", 120, 15));
        EXPECT_TRUE(write_small_coded_movie(home / "short.mp4", 30, 15));
        job work;
        EXPECT_TRUE(new_collection(folder, "Final",
                                   {home / "long.mp4", home / "short.mp4", home / "long.mp4"},
                                   movies_as::vistel_each, work));
        auto made = load_collection(folder).value().collection;
        const auto second = made.vistels()[1];
        fs::copy(home / "short.mp4", second->data_folder() + "/part 002.mp4");
        auto parts = second->parts();
        parts.parts.push_back({0.75, 1, second->data_folder() + "/part 002.mp4", {}});
        second->set_parts(parts);
        EXPECT_TRUE(save_collection(made, folder));
        open();
        auto coded = add_row("R");
        for (int n = 0; n < 5; ++n) {
            const double start = n * 0.7 + 0.01;
            coded.operations.emplace_back(
                operation::insert_clip{shared_text("R"), clip_of(std::to_string(n), start, start + 0.25)});
        }
        EXPECT_TRUE(event->timeline().apply(coded));
    }
    void open() {
        event.reset();
        auto opened = open_event::open(folder, find_home_places(home.path()), loop);
        ASSERT_TRUE(opened) << opened.message();
        event = std::move(opened).value();
        event->set_volume(0);
        for (const auto& vistel : event->collection().vistels()) {
            event->playback().set_view_size(vistel->uuid(), 160, 120);
        }
    }
    void make(const collection_change& change) {
        const auto made = event->changes().make(change);
        EXPECT_TRUE(made) << made.message();
    }
    void run(padding_command command) {
        job work;
        const auto planned = plan_padding(event->collection(), command);
        ASSERT_TRUE(planned) << planned.message();
        EXPECT_TRUE(make_padding_files(planned.value().files, *event->blank_movie(), work));
        make(planned.value().change);
    }
    std::string uuid(std::size_t vistel) { return event->collection().vistels()[vistel]->uuid(); }
    // Behind its last part a vistel goes on showing the last frame, unless it is padded.
    bool is_filmed(const single_Vistel_CTR& vistel, double seconds) {
        return movie_time_at(event->collection(), vistel.uuid(), seconds) < vistel.parts().duration();
    }
    // The frame that each vistel shows at the start of each clip; -1: none.
    std::vector<int> frames() {
        std::vector<int> all;
        for (int n = 0; n < 5; ++n) {
            bool done = false;
            const auto place = event->timeline().timeline().find_clip(std::to_string(n));
            event->playback().seek(place->clip->secs_start(), [&] { done = true; });
            EXPECT_TRUE(loop.run_until([&] { return done; }, wait_seconds));
            for (const auto& vistel : event->collection().vistels()) {
                const auto picture = event->playback().picture(vistel->uuid());
                const bool filmed = is_filmed(*vistel, place->clip->secs_start());
                all.push_back(picture && filmed ? read_frame_number(*picture) : -1);
            }
        }
        return all;
    }
    std::vector<double> times() {
        std::vector<double> all;
        for (const auto& clip : event->timeline().timeline().rows().front()->clips()) {
            all.push_back(clip->secs_start());
            all.push_back(clip->secs_end());
        }
        for (const auto& vistel : event->collection().vistels()) {
            all.push_back(vistel->manual_start_offset().value_or(-99));
            for (const auto& part : vistel->parts().parts) all.push_back(part.gap_before);
        }
        return all;
    }
    std::size_t padding_files() {
        EXPECT_TRUE(event->save_all());  // what is not used goes with that
        std::size_t count = 0;
        for (const auto& file : fs::recursive_directory_iterator(home.path())) {
            count += is_padding_file_name(file.path().filename().string());
        }
        return count;
    }
    static void expect_near(const std::vector<double>& a, const std::vector<double>& b) {
        ASSERT_EQ(a.size(), b.size());
        for (std::size_t index = 0; index < a.size(); ++index)
            EXPECT_NEAR(a[index], b[index], 0.001) << index;
    }

    temporary_folder home;
    const std::string folder = home / "Cup.VVault/Video Groups/Final";
    plain_run_loop loop;
    std::unique_ptr<open_event> event;
};

TEST_F(filmed_event, clips_stay_on_their_frames_through_offsets_padding_and_back) {
    const auto first = frames();
    // The first vistel begins earlier than the others, then later; they go on showing what they showed.
    for (const double offset : {-0.5, 0.8}) {
        make(plan_offset(uuid(0), offset));
        const auto now = frames();
        for (std::size_t at = 0; at < now.size(); ++at) {
            EXPECT_TRUE(at % 3 == 0 || now[at] == first[at]) << offset << " " << at;
        }
    }
    make(plan_offset(uuid(2), 0.3));
    const auto coded = frames();
    EXPECT_NE(coded, first);
    const auto before = times();
    run(padding_command::replace_with_padding);
    EXPECT_EQ(frames(), coded);
    const std::size_t files = padding_files();
    EXPECT_EQ(files, 2U + 1 + 2);  // two wait, one has a gap, two end early
    open();
    EXPECT_TRUE(event->messages().empty());
    EXPECT_EQ(frames(), coded);
    const auto padded = times();
    EXPECT_TRUE(padding_needed_by(*event->undo().next_undo(), event->collection()).empty());
    EXPECT_TRUE(event->undo().undo());
    EXPECT_EQ(padding_files(), 0U);
    EXPECT_EQ(frames(), coded);
    expect_near(times(), before);
    // Made before, by a job; redo has nothing to write then.
    const auto needed = padding_needed_by(*event->undo().next_redo(), event->collection());
    ASSERT_EQ(needed.size(), files);
    job work;
    EXPECT_TRUE(make_padding_files(needed, *event->blank_movie(), work));
    const auto made_at = fs::last_write_time(needed.front().path);
    EXPECT_TRUE(event->undo().redo());
    EXPECT_EQ(fs::last_write_time(needed.front().path), made_at);
    EXPECT_EQ(padding_files(), files);
    EXPECT_EQ(frames(), coded);
    expect_near(times(), padded);
    run(padding_command::restore_offsets);
    EXPECT_EQ(padding_files(), 0U);
    EXPECT_EQ(frames(), coded);
    expect_near(times(), before);
    open();
    EXPECT_EQ(frames(), coded);
    expect_near(times(), before);
}

TEST_F(filmed_event, padding_that_is_given_up_changes_nothing) {
    make(plan_offset(uuid(0), 2));
    const auto before = times();
    const auto planned = plan_padding(event->collection(), padding_command::replace_with_padding);
    ASSERT_TRUE(planned);
    job cancelled;
    cancelled.cancel();
    EXPECT_FALSE(make_padding_files(planned.value().files, *event->blank_movie(), cancelled));
    // What changes while the files are made is not padded by what was planned before.
    make(plan_offset(uuid(0), 3));
    EXPECT_FALSE(event->changes().make(planned.value().change));
    make(plan_offset(uuid(0), 2));
    expect_near(times(), before);
    EXPECT_EQ(padding_files(), 0U);
}

// As a job brings them that was begun a while ago.
TEST_F(filmed_event, other_movies_are_taken_for_the_parts_they_were_made_of) {
    const auto made_of = event->collection().vistels()[1]->parts().parts;
    auto brought = made_of;
    for (auto& part : brought) {
        const std::string other = part.path + " other.mp4";
        fs::copy(part.path, other);
        part.path = other;
    }
    // Where they lie may change meanwhile.
    make(plan_gap(event->collection(), event->timeline().timeline(), uuid(1), 1, 1.25));
    make(plan_other_movies(uuid(1), made_of, brought));
    const auto now = event->collection().vistels()[1]->parts().parts;
    ASSERT_EQ(now.size(), 2U);
    EXPECT_EQ(now[1].path, brought[1].path);
    EXPECT_NEAR(now[1].gap_before, 1.25, 1e-9);
    // Other movies may not.
    const auto refused = event->changes().make(plan_other_movies(uuid(1), made_of, brought));
    EXPECT_TRUE(refused.message().ends_with("changed meanwhile.")) << refused.message();
    EXPECT_TRUE(event->undo().undo());
    make(plan_more_parts(uuid(1), {made_of.back()}));
    EXPECT_FALSE(event->changes().make(plan_other_movies(uuid(1), made_of, brought)));
}

TEST_F(filmed_event, locked_clips_move_with_their_movie_part) {
    // On the second part, which is from 1.75 to 2.75 of the second vistel: the clip at 2.11.
    const auto frame_of = [](const std::vector<int>& all, int clip) {
        return all[static_cast<std::size_t>(clip) * 3 + 1];
    };
    const auto before = frames();
    const auto start = times();
    ASSERT_GE(frame_of(before, 3), 0);
    make(plan_gap(event->collection(), event->timeline().timeline(), uuid(1), 1, 1.25));
    EXPECT_NE(frame_of(frames(), 3), frame_of(before, 3));
    EXPECT_TRUE(event->undo().undo());
    make(plan_clip_lock(uuid(1), true));
    make(plan_gap(event->collection(), event->timeline().timeline(), uuid(1), 1, 1.25));
    EXPECT_EQ(frame_of(frames(), 3), frame_of(before, 3));
    EXPECT_EQ(frame_of(frames(), 1), frame_of(before, 1));
    EXPECT_NEAR(event->timeline().timeline().find_clip("3")->clip->secs_start(), 2.61, 1e-9);
    EXPECT_FALSE(
        event->changes().make(plan_gap(event->collection(), event->timeline().timeline(), uuid(1), 1, -1)));
    EXPECT_TRUE(event->undo().undo());
    expect_near(times(), start);
}

TEST_F(filmed_event, a_movie_that_was_away_comes_back_to_its_frames) {
    const auto before = frames();
    const auto start = times();
    const auto part = event->collection().vistels()[1]->parts().parts[0];
    event.reset();
    fs::rename(part.path, home / "found.mp4");
    open();
    EXPECT_NE(frames(), before);
    job work;
    const auto brought = bring_parts(*event->collection().vistels()[1], {home / "found.mp4"}, work);
    ASSERT_TRUE(brought) << brought.message();
    make(plan_found_movie(uuid(1), brought.value().front()));
    EXPECT_EQ(frames(), before);
    EXPECT_FALSE(event->changes().make(plan_found_movie(uuid(1), brought.value().front())));
    open();
    EXPECT_TRUE(event->messages().empty()) << event->messages().front().message();
    EXPECT_EQ(frames(), before);
    expect_near(times(), start);
    EXPECT_TRUE(event->undo().undo());
    EXPECT_NE(frames(), before);
    EXPECT_TRUE(event->undo().redo());
    EXPECT_EQ(frames(), before);
    // A shorter one leaves the part behind it in its place.
    auto shorter = brought.value().front();
    shorter.part_duration -= 0.25;
    EXPECT_TRUE(event->undo().undo());
    make(plan_found_movie(uuid(1), shorter));
    EXPECT_NEAR(event->collection().vistels()[1]->parts().starts()[1], 1.75, 1e-9);
}

// Coded on the clock alone, and only then filmed.
TEST_F(filmed_event, a_movie_added_later_is_aligned_to_what_was_coded_without_it) {
    const auto movies = event->collection().vistels();
    for (const auto& vistel : movies) make(plan_removal(vistel->uuid()));
    EXPECT_TRUE(event->runs_on_clock());
    event->playback().seek(4000);  // far behind the last clip
    event->playback().play();
    EXPECT_TRUE(event->playback().is_playing());
    event->playback().pause();
    EXPECT_GE(event->playback().collection_time(), 4000);
    for (const double seen_at : {1.0, 2.6}) {  // the clip at 2.11 is later, and earlier, than in the movie
        for (std::size_t step = 0; step < 3; ++step) EXPECT_TRUE(event->undo().undo());
        for (std::size_t step = 1; step < 3; ++step) make(plan_removal(movies[step]->uuid()));
        EXPECT_FALSE(event->runs_on_clock());
        const double coded = event->timeline().timeline().find_clip("3")->clip->secs_start();
        make(plan_coded_moment(coded, {uuid(0), seen_at}));
        event->playback().set_view_size(uuid(0), 160, 120);
        bool done = false;
        const auto place = event->timeline().timeline().find_clip("3");
        event->playback().seek(place->clip->secs_start(), [&] { done = true; });
        EXPECT_TRUE(loop.run_until([&] { return done; }, wait_seconds));
        const auto picture = event->playback().picture(uuid(0));
        ASSERT_TRUE(picture);
        EXPECT_EQ(read_frame_number(*picture), std::lround(seen_at * 30));
        // Clips from before the movie can still be reached.
        const auto first = event->timeline().timeline().find_clip("0")->clip->secs_start();
        event->playback().seek(first);
        EXPECT_EQ(event->playback().collection_time(), first);
    }
}

}  // namespace
}  // namespace vistels

#endif
