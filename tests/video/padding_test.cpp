// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>

#include "media/frame_reader.h"
#include "media/movie_information.h"
#include "support/temporary_folder.h"
#include "util/file_system.h"
#include "video/blank_movie.h"
#include "video/collection_edit.h"
#include "video/collection_failures.h"
#include "video/padding_movies.h"
#include "video/part_placing.h"
#include "video/video_coll_Offsets.h"

namespace vistels {
namespace {

using testing::temporary_folder;

using offsets = std::vector<std::optional<double>>;

// Vistels "1", "2" ... with these offsets; each has a part of 10 seconds and, after a gap of its number of
// seconds, one of 5.
video_collection_ROOT collection_of(const offsets& all) {
    video_collection_ROOT made;
    std::vector<std::shared_ptr<single_Vistel_CTR>> vistels;
    for (const auto& offset : all) {
        auto one = std::make_shared<single_Vistel_CTR>();
        const double number = static_cast<double>(vistels.size() + 1);
        one->set_number(number);
        one->set_uuid(std::to_string(vistels.size() + 1));
        one->set_manual_start_offset(offset);
        one->set_data_folder("/vistels/" + one->uuid());
        one->set_parts({{{0, 10, one->data_folder() + "/part 001.mp4", {}},
                         {number, 5, one->data_folder() + "/part 002.mp4", {}}}});
        vistels.push_back(std::move(one));
    }
    made.set_vistels(std::move(vistels));
    return made;
}

// Which second of which movie every vistel shows at a collection time.
std::string shown_at(const video_collection_ROOT& collection, double seconds) {
    std::string text;
    const auto items = offsets_of(collection);
    for (const auto& vistel : collection.vistels()) {
        const double lead = lead_for_clips(items, {vistel->number(), vistel->manual_start_offset()});
        const auto parts = vistel->parts();
        const double movie = seconds + lead;
        const auto part = part_at(parts, movie);
        const bool is_filmed = part && !is_padding(parts.parts[*part]);
        text += is_filmed ? path_name(parts.parts[*part].path) + " " +
                                std::to_string(std::llround((movie - parts.starts()[*part]) * 1e6)) + "; "
                          : "-; ";
    }
    return text;
}

TEST(padding, leaves_every_frame_in_its_place_there_and_back) {
    const offsets cases[] = {{0, 0},
                             {0, 2.5},
                             {-3, -5},
                             {4, 4},
                             {-2, -2},
                             {{}, 3.25},
                             {{}, -1, 2},
                             {1, 2, 3.125},
                             {0.1, 0.7, -0.3, {}},
                             {0.0004, -0.0003, 0.0001},
                             {}};
    for (const auto& all : cases) {
        if (all.empty()) {
            auto none = collection_of(all);
            EXPECT_EQ(pad_collection(none).message(), "There are no movie parts.");
            continue;
        }
        const auto before = collection_of(all);
        auto padded = detached_copy(before);
        const auto there = pad_collection(padded);
        ASSERT_TRUE(there) << there.message();
        for (const auto& vistel : padded.vistels()) {
            EXPECT_EQ(vistel->manual_start_offset().value_or(0), 0);
            const auto parts = vistel->parts();
            EXPECT_NEAR(parts.duration(), padded.vistels().front()->parts().duration(), 1e-9);
            std::vector<std::string> names;
            for (const auto& part : parts.parts) {
                EXPECT_EQ(part.gap_before, 0);
                names.push_back(path_name(part.path));
                EXPECT_EQ(is_padding_file_name(names.back()), is_padding(part)) << names.back();
            }
            EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
        }
        auto restored = detached_copy(padded);
        const auto back = restore_offsets(restored);
        EXPECT_NEAR(back.shift, -there.value().shift, 1e-9);
        EXPECT_TRUE(back.files.empty());
        EXPECT_TRUE(difference(before, restored).empty()) << ::testing::PrintToString(all);
        for (double seconds = -9.9; seconds < 25; seconds += 0.37) {
            EXPECT_EQ(shown_at(padded, seconds + there.value().shift), shown_at(before, seconds)) << seconds;
        }
        // Without offsets: the vistels whose offset was 0 stay on their frames.
        auto plain = detached_copy(padded);
        const auto removed = remove_offsets_and_padding(plain);
        auto aligned = detached_copy(before);
        for (const auto& vistel : aligned.vistels()) vistel->set_manual_start_offset(0);
        const double largest = largest_offset_for_clips(offsets_of(before));
        EXPECT_NEAR(there.value().shift + removed.shift, largest, 1e-9);
        EXPECT_EQ(shown_at(plain, 3), shown_at(aligned, 3));
    }
}

TEST(padding, what_changed_while_padded_stays_in_step) {
    auto collection = collection_of({0, 2});
    const auto shift = pad_collection(collection).value().shift;
    collection.find_vistel("2")->set_manual_start_offset(0.5);  // half a second later
    auto vistels = collection.vistels();
    vistels.push_back(collection_of({0, 0, 1}).vistels().back());  // one that was never padded
    collection.set_vistels(vistels);
    auto restored = detached_copy(collection);
    const auto back = restore_offsets(restored);
    EXPECT_EQ(restored.find_vistel("2")->manual_start_offset(), 2.5);
    for (double seconds = 0; seconds < 20; seconds += 0.37) {
        EXPECT_EQ(shown_at(restored, seconds + back.shift), shown_at(collection, seconds));
    }
    EXPECT_NE(shift, 0);
}

TEST(padding, a_vistel_without_movies_is_blank_from_beginning_to_end) {
    // It neither waits nor makes others wait, wherever its offset lies.
    const offsets cases[] = {{{}, 0.5, 2}, {0, 0.5, 2}, {-7, 0.5, 2}, {9, 0.5, 2}, {1, -3, -5}};
    for (const auto& all : cases) {
        const auto before = collection_of(all);
        before.vistels().front()->set_parts({});
        auto padded = detached_copy(before);
        const auto there = pad_collection(padded);
        ASSERT_TRUE(there) << there.message();
        const auto blank = padded.vistels().front()->parts();
        ASSERT_EQ(blank.parts.size(), 1U);
        EXPECT_TRUE(is_padding(blank.parts.front()));
        EXPECT_TRUE(is_padding_file_name(path_name(blank.parts.front().path)));
        EXPECT_NEAR(blank.duration(), padded.vistels().back()->parts().duration(), 1e-9);
        auto restored = detached_copy(padded);
        EXPECT_NEAR(restore_offsets(restored).shift, -there.value().shift, 1e-9);
        EXPECT_TRUE(difference(before, restored).empty()) << ::testing::PrintToString(all);
        for (double seconds = -9.9; seconds < 25; seconds += 0.37) {
            EXPECT_EQ(shown_at(padded, seconds + there.value().shift), shown_at(before, seconds)) << seconds;
        }
    }
    // One that could not be read, or is streamed and not here, has movies that are only away.
    for (const bool streamed : {false, true}) {
        auto away = collection_of({1, 2});
        const auto first = away.vistels().front();
        first->set_parts({});
        first->set_problem(vistel_folder_is_missing("/v/1"));
        streamed ? first->set_http_file("http://localhost/1.m3u8") : first->set_data_folder("");
        EXPECT_EQ(pad_collection(away).error().cause(), vistel_folder_is_missing("/v/1"));
        EXPECT_EQ(away.vistels().back()->manual_start_offset(), 2);
    }
}

TEST(padding, names_of_other_movies_are_no_padding) {
    for (const char* name : {"part 001.mp4", "my padding.mov", "padding 1 20.mov", "a padding 1.mov",
                             "a padding 1 20.mp4", "a padding 1 2x.mov", "a padding .mov", ""})
        EXPECT_FALSE(is_padding_file_name(name)) << name;
    EXPECT_TRUE(is_padding_file_name("part 001 padding 1 20.mov"));
    EXPECT_TRUE(is_padding_file_name("part 001 padding 1 20 temp.mov"));
}

TEST(movie_parts, a_gap_moves_what_is_behind_it) {
    auto third = collection_of({0}).vistels().front()->parts();
    third.parts.push_back({3, 2, "", {}});
    EXPECT_EQ(with_gap(third, 1, 6).starts(), (std::vector<double>{0, 16, 24}));
    EXPECT_EQ(with_gap(third, 1, -6).parts[1].gap_before, 0);
    EXPECT_EQ(with_gap(third, 9, 6), third);
}

#if VISTELS_HAVE_MEDIA

TEST(blank_movie, is_made_once_and_again_when_it_is_lost_or_damaged) {
    const temporary_folder home;
    const std::string path = home / "Temp/blank vistel movie.mov";
    blank_vistel_movie blank(home / "Temp");
    blank.prepare();
    ASSERT_TRUE(blank.wait_for_movie());
    EXPECT_EQ(blank.wait_for_movie().value(), path);
    const auto inode = [&] {
        file_identity found;
        EXPECT_EQ(machine_files().identity(path, found), 0);
        return found;
    };
    const auto first = inode();
    const std::string whole = read_file(path).value();
    testing::put_file(home / "Temp/blank vistel movie OLD temp.mov", "left over");
    std::filesystem::last_write_time(home / "Temp/blank vistel movie OLD temp.mov",
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(2));
    {
        blank_vistel_movie other(home / "Temp");
        ASSERT_TRUE(other.wait_for_movie());
        EXPECT_EQ(inode(), first);
    }
    for (const std::string& damage : {std::string(), whole.substr(0, whole.size() / 2)}) {
        testing::put_file(path, damage);
        ASSERT_TRUE(blank.wait_for_movie());
        EXPECT_NEAR(probe_movie(path).value().duration, 1, 1e-3);
    }
    EXPECT_EQ(names_in_folder(home / "Temp").size(), 1U);
}

TEST(blank_movie, is_as_long_as_wanted_and_black_throughout) {
    const temporary_folder home;
    blank_vistel_movie blank(home / "Temp");
    for (const double seconds : {0.0001, 0.001, 0.03, 0.5, 1.0 / 3, 61.7, 7200.125}) {
        const std::string path = home / "blank.mov";
        job work;
        const auto made = blank.write(path, seconds, work);
        ASSERT_TRUE(made) << made.message();
        EXPECT_EQ(work.progress(), 1);
        EXPECT_NEAR(probe_movie(path).value().duration, seconds, 2e-5);
        auto reader = frame_reader::open(path);
        ASSERT_TRUE(reader);
        for (const double at : {0.0, 0.4, 0.99}) {
            const auto shown = reader.value()->frame_at(at * seconds, 320, 180);
            ASSERT_TRUE(shown) << shown.message();
            const auto& picture = *shown.value();
            for (const int row : {0, picture.height - 1}) EXPECT_LT(picture.row(row)[0], 4);
        }
    }
}

TEST(blank_movie, says_why_it_cannot_be_made) {
    const temporary_folder home;
    testing::put_file(home / "file", "no folder");
    job work;
    const struct {
        std::string temporary, path;
        double seconds;
        const char* named;
    } cases[] = {{home / "Temp", home / "file/blank.mov", 1, "file/blank"},
                 {home / "Temp", home / "blank.mov", 0, "blank.mov"},
                 {home / "file/Temp", home / "blank.mov", 1, "file/Temp"}};
    for (const auto& one : cases) {
        blank_vistel_movie blank(one.temporary);
        const auto made = blank.write(one.path, one.seconds, work);
        EXPECT_TRUE(made.message().starts_with("Could not make an empty vistel movie.")) << made.message();
        EXPECT_NE(made.message().find(one.named), std::string::npos) << made.message();
        EXPECT_FALSE(file_exists(one.path));
    }
}

TEST(padding, files_are_made_whole_or_not_at_all) {
    const temporary_folder folder, home;
    blank_vistel_movie blank(home.path());
    const std::vector<padding_file> files{{folder / "a padding 1 500.mov", 0.5},
                                          {folder / "a padding 2 30.mov", 0.03},
                                          {folder / "b padding 3 3600000.mov", 3600}};
    job cancelled([&](double fraction) {
        if (fraction > 0.5) cancelled.cancel();
    });
    EXPECT_FALSE(make_padding_files(files, blank, cancelled));
    EXPECT_TRUE(names_in_folder(folder.path()).empty());
    job work;
    const auto made = make_padding_files(files, blank, work);
    ASSERT_TRUE(made) << made.message();
    EXPECT_EQ(names_in_folder(folder.path()).size(), 3U);
    EXPECT_EQ(work.progress(), 1);
    std::filesystem::create_directory(folder / "d padding 1 500 temp.mov");
    const std::vector<padding_file> more{{folder / "c padding 1 500.mov", 0.5},
                                         {folder / "d padding 1 500.mov", 0.5}};
    EXPECT_FALSE(make_padding_files(more, blank, work));
    EXPECT_FALSE(file_exists(folder / "c padding 1 500.mov"));
}

#endif

}  // namespace
}  // namespace vistels
