// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <filesystem>
#include <random>

#include "media/frame_reader.h"
#include "media/packet_index.h"
#include "media/sound_reader.h"
#include "support/coded_movie.h"
#include "support/temporary_folder.h"

namespace vistels {
namespace {

using namespace vistels::testing;

constexpr unsigned frame_count = 70;

movie_writer_settings small_movie() {
    movie_writer_settings made;
    made.width = 320;
    made.height = 240;
    made.gop_frames = 12;
    made.video_bit_rate = 1'000'000;
    made.preset = "ultrafast";
    made.threads = 1;
    return made;
}

// Frames 20 to 60 ms apart, and one that stands for 2 seconds.
std::vector<double> uneven_times() {
    std::vector<double> times;
    double at = 0;
    for (unsigned i = 0; i < frame_count; ++i) {
        times.push_back(at);
        at += i == 30 ? 2.0 : 0.02 + 0.01 * (i * 7 % 5);
    }
    return times;
}

struct movie_case {
    const char* name;
    const char* file;
    int b_frames;
    int rate;
    int divisor;
    bool uneven;
};

class exact_frames : public ::testing::TestWithParam<movie_case> {};

TEST_P(exact_frames, are_found_by_their_time) {
    const movie_case& c = GetParam();
    const temporary_folder folder;
    const std::string path = folder / c.file;
    auto settings = small_movie();
    settings.b_frames = c.b_frames;
    settings.frame_rate = c.rate;
    settings.frame_rate_divisor = c.divisor;
    const auto times = c.uneven ? uneven_times() : std::vector<double>{};
    const auto written = write_coded_movie(path, settings, frame_count, times);
    ASSERT_TRUE(written.ok()) << written.message();

    const auto index = read_packet_index(path);
    ASSERT_TRUE(index.ok()) << index.message();
    ASSERT_EQ(index.value().stamps.size(), frame_count);
    auto opened = frame_reader::open(path);
    ASSERT_TRUE(opened.ok()) << opened.message();
    frame_reader& reader = *opened.value();

    const auto expect_frame = [&](double seconds, int width, unsigned frame) {
        const auto shown = reader.frame_at(seconds, width, width * 3 / 4);
        ASSERT_TRUE(shown.ok()) << shown.message();
        EXPECT_EQ(read_frame_number(*shown.value()), static_cast<int>(frame)) << seconds;
        EXPECT_EQ(shown.value()->width, width);
    };
    std::minstd_rand random(3);
    for (int i = 0; i < 150; ++i) {
        const auto frame = static_cast<unsigned>(random() % frame_count);
        const double at = index.value().seconds_of(frame);
        if (!times.empty()) {
            EXPECT_NEAR(at, times[frame], 0.001);
        }
        expect_frame(at, i % 2 == 0 ? 160 : 201, frame);
        if (frame > 0) expect_frame(at - 0.002, 320, frame - 1);
    }
    expect_frame(-5, 160, 0);
    expect_frame(1e6, 160, frame_count - 1);

    // And one after another.
    ASSERT_TRUE(reader.seek(0).ok());
    for (unsigned frame = 0; frame < frame_count; ++frame) {
        const auto shown = reader.next(160, 120);
        ASSERT_TRUE(shown.ok() && shown.value());
        ASSERT_EQ(read_frame_number(*shown.value()), static_cast<int>(frame));
        EXPECT_EQ(shown.value()->last, frame + 1 == frame_count);
    }
    EXPECT_EQ(reader.next(160, 120).value(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(movies, exact_frames,
                         ::testing::Values(movie_case{"plain", "plain.mp4", 0, 30, 1, false},
                                           movie_case{"b_frames", "b frames.mp4", 2, 30, 1, false},
                                           movie_case{"ntsc", "ntsc.mov", 3, 30000, 1001, false},
                                           movie_case{"uneven", "uneven.mp4", 2, 30, 1, true},
                                           movie_case{"coarse_time_base", "coarse.mkv", 2, 50, 1, false},
                                           movie_case{"without_index", "stream.ts", 2, 25, 1, false}),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(frame_reader, key_frames_alone_stand_at_their_own_times) {
    const temporary_folder folder;
    for (const char* const name : {"a.mp4", "a.mkv"}) {
        ASSERT_TRUE(write_small_coded_movie(folder / name, 100, 20).ok());
        auto opened = frame_reader::open(folder / name);
        ASSERT_TRUE(opened.ok()) << opened.message();
        frame_reader& reader = *opened.value();
        reader.set_decoded(frames_decoded::key_frames_only);
        for (const int from : {0, 30, 79}) {
            ASSERT_TRUE(reader.seek(reader.stamp_at(from / 30.0)).ok());
            for (int key = from / 20 * 20; key < 100; key += 20) {
                const auto shown = reader.next(320, 240);
                ASSERT_TRUE(shown.ok() && shown.value()) << name << " " << key;
                EXPECT_EQ(read_frame_number(*shown.value()), key) << name;
                EXPECT_NEAR(shown.value()->time, key / 30.0, 0.001) << name << " from " << from;
                if (key < 80) {
                    EXPECT_NEAR(shown.value()->until, (key + 20) / 30.0, 0.001) << name;
                }
            }
            EXPECT_EQ(reader.next(320, 240).value(), nullptr);
        }
    }
}

TEST(movie_information, says_what_was_written) {
    const temporary_folder folder;
    for (const int rotation : {0, 90, 180, 270}) {
        const std::string path = folder / (std::to_string(rotation) + ".mp4");
        auto settings = small_movie();
        settings.rotation = rotation;
        settings.sound_channels = 1;
        ASSERT_TRUE(write_coded_movie(path, settings, 30).ok());
        const auto probed = probe_movie(path);
        ASSERT_TRUE(probed.ok()) << probed.message();
        const movie_information& known = probed.value();
        EXPECT_NEAR(known.duration, 1.0, 0.001);
        EXPECT_NEAR(known.frame_rate, 30, 0.01);
        EXPECT_EQ(known.tracks, 2);
        EXPECT_EQ(known.rotation, rotation);
        EXPECT_EQ(known.width, rotation % 180 == 0 ? 320 : 240);
        EXPECT_EQ(known.video_codec, "h264");
        EXPECT_EQ(known.sound_rate, 48000);
        EXPECT_EQ(known.sound_channels, 1);
        EXPECT_GT(known.data_rate, 0);

        // The code, at the stored picture's upper left, has gone to another corner.
        auto opened = frame_reader::open(path);
        ASSERT_TRUE(opened.ok());
        const auto shown = opened.value()->frame_at(0.5, 0, 0);
        ASSERT_TRUE(shown.ok());
        EXPECT_EQ(read_frame_number(*shown.value()) == 15, rotation == 0);
        EXPECT_EQ(shown.value()->height, rotation % 180 == 0 ? 240 : 320);
    }
}

TEST(frame_reader, colours_are_right_in_any_size) {
    const temporary_folder folder;
    const std::string path = folder / "halves.mp4";
    constexpr std::uint8_t colours[2][3] = {{40, 90, 200}, {180, 120, 30}};  // B, G, R
    auto made = movie_writer::create(path, small_movie());
    ASSERT_TRUE(made.ok()) << made.message();
    std::vector<std::uint8_t> pixels;
    for (int i = 0; i < 320 * 240; ++i) {
        const auto& colour = colours[i % 320 / 160];
        pixels.insert(pixels.end(), {colour[0], colour[1], colour[2], 0});
    }
    ASSERT_TRUE(made.value()->add_picture(pixels.data(), 320 * 4).ok());
    ASSERT_TRUE(made.value()->finish().ok());
    auto reader = frame_reader::open(path);
    ASSERT_TRUE(reader.ok()) << reader.message();
    const int sizes[][2] = {{320, 240}, {160, 120}, {161, 120}, {203, 77}, {33, 17}, {641, 479}, {15, 9}};
    for (const auto& [width, height] : sizes) {
        const auto shown = reader.value()->frame_at(0, width, height);
        ASSERT_TRUE(shown.ok()) << shown.message();
        ASSERT_EQ(shown.value()->width, width);
        ASSERT_EQ(shown.value()->height, height);
        for (const int y : {0, height / 2, height - 1}) {
            for (const int x : {0, width / 4, width * 3 / 4, width - 1}) {
                const auto* const pixel = shown.value()->row(y) + std::ptrdiff_t{4} * x;
                for (int i = 0; i < 3; ++i)
                    EXPECT_NEAR(pixel[i], colours[x / ((width + 1) / 2)][i], 8)
                        << width << ": " << x << ", " << y;
                EXPECT_EQ(pixel[3], 255);
            }
        }
    }
}

// As a recording that was broken off, or one that went through a pipe.
TEST(movie_information, duration_is_measured_where_the_header_does_not_know_it) {
    const temporary_folder folder;
    const std::string path = folder / "whole.mkv";
    ASSERT_TRUE(write_coded_movie(path, small_movie(), 60).ok());
    std::string bytes = file_bytes(path);
    const std::string duration_id("\x44\x89\x88", 3);  // and 8 bytes of a double
    const auto at = bytes.find(duration_id);
    ASSERT_NE(at, std::string::npos);
    bytes.replace(at + duration_id.size(), 8, 8, '\0');
    put_file(path, bytes);
    const auto probed = probe_movie(path);
    ASSERT_TRUE(probed.ok()) << probed.message();
    EXPECT_NEAR(probed.value().duration, 2.0, 0.002);
}

TEST(broken_movies, are_refused_by_name_or_read_as_far_as_they_go) {
    const temporary_folder folder;
    const std::string whole_path = folder / "whole.mp4";
    auto settings = small_movie();
    settings.fast_start = true;
    ASSERT_TRUE(write_coded_movie(whole_path, settings, frame_count).ok());
    const std::string whole = file_bytes(whole_path);

    struct {
        const char* name;
        std::string bytes;
    } const refused[] = {
        {"empty.mp4", ""}, {"text.mp4", "not a movie at all"}, {"head.mp4", whole.substr(0, 900)}};
    for (const auto& c : refused) {
        const std::string path = folder / c.name;
        put_file(path, c.bytes);
        const auto opened = frame_reader::open(path);
        ASSERT_FALSE(opened.ok()) << c.name;
        EXPECT_NE(opened.message().find(c.name), std::string::npos) << opened.message();
    }
    for (const std::string& path : {folder / "missing.mp4", folder.path()}) {
        const auto probed = probe_movie(path);
        ASSERT_FALSE(probed.ok());
        EXPECT_NE(probed.message().find(path), std::string::npos);
    }

    // Damaged anywhere: whatever happens, it comes to an end.
    std::minstd_rand random(5);
    const std::string damaged_path = folder / "damaged.mp4";
    for (int round = 0; round < 30; ++round) {
        std::string damaged = whole;
        for (int i = 0; i < 40; ++i) damaged[random() % damaged.size()] = static_cast<char>(random());
        if (round % 3 == 0) damaged.resize(damaged.size() / 2);
        put_file(damaged_path, damaged);
        auto opened = frame_reader::open(damaged_path);
        if (!opened.ok()) continue;
        for (const double seconds : {0.0, 2.0, 0.7, 100.0}) {
            const auto shown = opened.value()->frame_at(seconds, 160, 120);
            EXPECT_TRUE(shown.ok() || !shown.message().empty());
        }
    }
}

TEST(movie_writer, removes_what_was_not_finished) {
    const temporary_folder folder;
    const std::string path = folder / "half.mp4";
    {
        auto made = movie_writer::create(path, small_movie());
        ASSERT_TRUE(made.ok()) << made.message();
        const std::vector<std::uint8_t> pixels(320 * 240 * 4, 90);
        ASSERT_TRUE(made.value()->add_picture(pixels.data(), 320 * 4).ok());
        EXPECT_TRUE(std::filesystem::exists(path));
        ASSERT_TRUE(made.value()->add_picture_at(pixels.data(), 320 * 4, 0.5).ok());
        EXPECT_FALSE(made.value()->add_picture_at(pixels.data(), 320 * 4, 0.1).ok());
    }
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_FALSE(movie_writer::create(folder / "no folder/a.mp4", small_movie()).ok());
    auto odd = small_movie();
    odd.width = 321;
    EXPECT_FALSE(movie_writer::create(path, odd).ok());
}

TEST(sound_reader, finds_sound_by_time) {
    const temporary_folder folder;
    const std::string path = folder / "beeps.mp4";
    auto settings = small_movie();
    settings.sound_channels = 2;
    ASSERT_TRUE(write_coded_movie(path, settings, 100).ok());
    auto opened = sound_reader::open(path);
    ASSERT_TRUE(opened.ok()) << opened.message();
    const auto loudness = [&](double seconds) {
        std::vector<float> samples(960 * sound_channels);
        EXPECT_TRUE(opened.value()->read(seconds, samples.data(), 960).ok());
        double sum = 0;
        for (const float sample : samples) sum += std::abs(sample);
        return sum / static_cast<double>(samples.size());
    };
    // Forwards, back, on from where it was, before the beginning and after the end.
    for (const double second : {1.0, 2.0, 3.0, 0.0, 1.0}) {
        EXPECT_GT(loudness(second + 0.02), 0.2) << second;
        EXPECT_LT(loudness(second + 0.2), 0.02) << second;
        EXPECT_LT(loudness(second - 0.05), 0.02) << second;
    }
    EXPECT_LT(loudness(50), 0.02);
    EXPECT_FALSE(sound_reader::open(folder / "missing.mp4").ok());
}

TEST(picture, is_written_as_png) {
    const temporary_folder folder;
    const std::string path = folder / "a.png";
    picture_pool pool;
    auto made = pool.make(21, 9);
    std::fill(made->bytes.begin(), made->bytes.end(), std::uint8_t{200});
    ASSERT_TRUE(write_png(*made, path).ok());
    EXPECT_EQ(file_bytes(path).substr(0, 8), "\x89PNG\r\n\x1a\n");
    EXPECT_FALSE(write_png(*made, folder / "no/a.png").ok());
}

TEST(picture, of_a_file_has_its_opacity_and_its_proportions) {
    // Two pixels beside each other: red of half opacity, and one that is not seen.
    constexpr unsigned char bytes[] = {
        0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a, 0x00, 0x00, 0x00, 0x0d, 0x49, 0x48, 0x44,
        0x52, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x01, 0x08, 0x06, 0x00, 0x00, 0x00, 0xf4,
        0x22, 0x7f, 0x8a, 0x00, 0x00, 0x00, 0x11, 0x49, 0x44, 0x41, 0x54, 0x78, 0x9c, 0x63, 0xf8,
        0xcf, 0xc0, 0xd0, 0xc0, 0xc0, 0xf0, 0x9f, 0x01, 0x00, 0x0c, 0x7f, 0x02, 0x7f, 0x88, 0xba,
        0x31, 0x9c, 0x00, 0x00, 0x00, 0x00, 0x49, 0x45, 0x4e, 0x44, 0xae, 0x42, 0x60, 0x82};
    const temporary_folder folder;
    put_file(folder / "a.png", std::string(std::begin(bytes), std::end(bytes)));
    const auto own = read_still_picture(folder / "a.png", 0, 0);
    ASSERT_TRUE(own.ok()) << own.message();
    EXPECT_EQ((std::vector<std::uint8_t>(own.value().row(0), own.value().row(0) + 4)),
              (std::vector<std::uint8_t>{0, 0, 255, 128}));
    EXPECT_EQ(own.value().row(0)[7], 0);
    const auto large = read_still_picture(folder / "a.png", 40, 40);
    ASSERT_TRUE(large.ok());
    EXPECT_EQ(large.value().width, 40);
    EXPECT_EQ(large.value().height, 20);
    put_file(folder / "b.png", "no picture");
    for (const char* name : {"b.png", "none.png"}) {
        EXPECT_NE(read_still_picture(folder / name, 0, 0).message().find(name), std::string::npos);
    }
}

}  // namespace
}  // namespace vistels
