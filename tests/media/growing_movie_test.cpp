// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/growing_movie.h"

#include <gtest/gtest.h>

#include <fstream>

#include "support/coded_movie.h"
#include "support/temporary_folder.h"

namespace vistels {
namespace {

using namespace vistels::testing;

constexpr int frame_count = 70;
constexpr int gop_frames = 12;
constexpr int most_held_back = 3;  // by the decoder, where frames refer to later ones

void write_movie(const std::string& path, bool in_fragments, int b_frames) {
    movie_writer_settings settings;
    settings.width = 320;
    settings.height = 240;
    settings.gop_frames = gop_frames;
    settings.b_frames = b_frames;
    settings.preset = "ultrafast";
    settings.threads = 1;
    settings.in_fragments = in_fragments;
    ASSERT_TRUE(write_coded_movie(path, settings, frame_count).ok());
}

std::size_t box_size(const std::string& bytes, std::size_t at) {
    std::size_t size = 0;
    for (std::size_t i = 0; i < 4; ++i) size = size << 8U | static_cast<unsigned char>(bytes[at + i]);
    return size;
}

// Where each fragment is whole.
std::vector<std::size_t> fragment_ends(const std::string& bytes) {
    std::vector<std::size_t> ends;
    for (std::size_t at = 0; at + 8 <= bytes.size(); at += box_size(bytes, at)) {
        if (bytes.compare(at + 4, 4, "mdat") == 0) ends.push_back(at + box_size(bytes, at));
    }
    return ends;
}

TEST(growing_movie, is_read_as_far_as_it_is_written_and_goes_on_when_more_comes) {
    const temporary_folder folder;
    for (const int b_frames : {0, 2}) {
        write_movie(folder / "whole.mp4", true, b_frames);
        const std::string whole = file_bytes(folder / "whole.mp4");
        const auto ends = fragment_ends(whole);
        ASSERT_EQ(ends.size(), (frame_count + gop_frames - 1) / gop_frames);

        const std::string path = folder / ("growing " + std::to_string(b_frames) + ".mp4");
        std::ofstream writer(path, std::ios::binary);
        std::unique_ptr<growing_movie> reader;
        int next = 0;
        constexpr std::size_t step = 1777;  // pieces that end anywhere
        for (std::size_t at = 0; at < whole.size(); at += step) {
            writer << whole.substr(at, step) << std::flush;
            const std::size_t written = std::min(whole.size(), at + step);
            const auto fragments =
                static_cast<int>(std::upper_bound(ends.begin(), ends.end(), written) - ends.begin());
            if (!reader) {
                auto opened = growing_movie::open(path);
                ASSERT_EQ(opened.ok(), fragments > 0) << opened.message();
                if (!opened.ok()) continue;
                reader = std::move(opened).value();
            }
            for (;;) {
                const auto shown = reader->next(160, 120);
                ASSERT_TRUE(shown.ok()) << shown.message();
                if (!shown.value()) break;
                ASSERT_EQ(read_frame_number(*shown.value()), next);
                ASSERT_NEAR(shown.value()->time, next / 30.0, 0.001);
                ++next;
            }
            const int there = std::min(frame_count, fragments * gop_frames);
            EXPECT_LE(next, there);
            EXPECT_GE(next, there - (b_frames > 0 ? most_held_back : 0));
        }
        EXPECT_GE(next, frame_count - most_held_back);
    }
}

TEST(growing_movie, refuses_what_is_not_written_in_fragments) {
    const temporary_folder folder;
    write_movie(folder / "plain.mp4", false, 0);
    put_file(folder / "text.mp4", "no movie, however much of it is there");
    for (const char* name : {"plain.mp4", "text.mp4", "none.mp4"}) {
        const auto opened = growing_movie::open(folder / name);
        ASSERT_FALSE(opened.ok()) << name;
        EXPECT_NE(opened.message().find(name), std::string::npos);
    }
}

}  // namespace
}  // namespace vistels
