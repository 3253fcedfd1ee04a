// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/deinterlace.h"

#include <gtest/gtest.h>

#include <cmath>

#include "media/frame_reader.h"
#include "media/movie_writer.h"
#include "support/temporary_folder.h"
#include "util/file_system.h"

namespace vistels {
namespace {

using testing::put_file;
using testing::temporary_folder;

constexpr int side = 64;
constexpr int frames = 16;
constexpr int rate = 25;

// The brightness of the scene at each field.
int shade_of(int field) {
    return 40 + 5 * field;
}

// Each picture holds two moments: the upper lines show one, those between them the next.
void write_interlaced_movie(const std::string& path, int count = frames, bool moves = true) {
    movie_writer_settings settings;
    settings.width = side;
    settings.height = side;
    settings.frame_rate = rate;
    settings.preset = "ultrafast";
    settings.threads = 1;
    settings.sound_channels = 1;
    auto writer = movie_writer::create(path, settings);
    ASSERT_TRUE(writer.ok()) << writer.message();
    for (int frame = 0; frame < count; ++frame) {
        std::vector<std::uint8_t> pixels;
        for (int y = 0; y < side; ++y) {
            pixels.insert(pixels.end(), side * 4,
                          static_cast<std::uint8_t>(shade_of(moves ? 2 * frame + y % 2 : 0)));
        }
        ASSERT_TRUE(writer.value()->add_picture(pixels.data(), side * 4).ok());
        const std::vector<float> silence(static_cast<std::size_t>(settings.sound_rate / rate));
        ASSERT_TRUE(writer.value()->add_sound(silence.data(), silence.size()).ok());
    }
    ASSERT_TRUE(writer.value()->finish().ok());
}

TEST(deinterlace, makes_one_whole_picture_of_each_field) {
    const temporary_folder folder;
    write_interlaced_movie(folder / "from.mp4");
    for (const char* container : {"a.mp4", "a.mov"}) {
        job work;
        const auto done = deinterlace_movie(folder / "from.mp4", folder / "unfinished 1", container, work);
        ASSERT_TRUE(done.ok()) << done.message();
        auto reader = frame_reader::open(folder / "unfinished 1");
        ASSERT_TRUE(reader.ok()) << reader.message();
        const auto& known = reader.value()->information();
        EXPECT_NEAR(known.frame_rate, 2 * rate, 0.01);
        EXPECT_NEAR(known.duration, static_cast<double>(frames) / rate, 0.5 / rate);
        EXPECT_EQ(known.sound_codec, "aac");
        // The first and the last have no field beyond them to be told from.
        for (int field = 2; field < 2 * frames - 2; ++field) {
            const auto shown = reader.value()->frame_at((field + 0.5) / (2 * rate), 0, 0);
            ASSERT_TRUE(shown.ok()) << shown.message();
            EXPECT_NEAR(shown.value()->time, field / (2.0 * rate), 1e-3);
            for (int y = 8; y < side - 8; ++y) {
                EXPECT_NEAR(shown.value()->row(y)[4 * side / 2], shade_of(field), 4) << field << ", " << y;
            }
        }
        std::remove((folder / "unfinished 1").c_str());
    }
}

TEST(deinterlace, a_key_frame_is_no_more_than_a_second_away) {
    const temporary_folder folder;
    write_interlaced_movie(folder / "from.mp4", 3 * rate, false);
    job work;
    const auto done = deinterlace_movie(folder / "from.mp4", folder / "unfinished 1", "a.mp4", work);
    ASSERT_TRUE(done.ok()) << done.message();
    auto reader = frame_reader::open(folder / "unfinished 1");
    ASSERT_TRUE(reader.ok()) << reader.message();
    reader.value()->set_decoded(frames_decoded::key_frames_only);
    ASSERT_TRUE(reader.value()->seek(reader.value()->stamp_at(2.9)).ok());
    ASSERT_TRUE(reader.value()->advance().ok());
    EXPECT_GE(reader.value()->seconds_at(reader.value()->current_stamp()), 1.9);
}

TEST(deinterlace, leaves_nothing_of_what_fails) {
    const temporary_folder folder;
    write_interlaced_movie(folder / "from.mp4");
    put_file(folder / "broken.mp4", "no movie");
    job work;
    EXPECT_FALSE(deinterlace_movie(folder / "broken.mp4", folder / "to", "a.mp4", work).ok());
    EXPECT_FALSE(deinterlace_movie(folder / "from.mp4", folder / "to", "a.txt", work).ok());
    EXPECT_FALSE(deinterlace_movie(folder / "from.mp4", folder / "none/to", "a.mp4", work).ok());
    job cancelled([&](double) { cancelled.cancel(); });
    EXPECT_FALSE(deinterlace_movie(folder / "from.mp4", folder / "to", "a.mp4", cancelled).ok());
    EXPECT_EQ(names_in_folder(folder.path()).size(), 2U);
}

}  // namespace
}  // namespace vistels
