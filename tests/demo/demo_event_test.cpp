// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/demo_event.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <memory>

#include "demo/block_code.h"
#include "demo/film_camera.h"
#include "demo/sound_mixer.h"
#include "logger/logger_Dict_funcs.h"
#include "logger/logger_settings.h"
#include "media/frame_reader.h"
#include "media/movie_information.h"
#include "support/temporary_folder.h"
#include "timeline/files/sxy_Save_Load.h"
#include "util/file_system.h"
#include "video/video_coll_LOAD.h"

namespace vistels {
namespace {

using testing::temporary_folder;

demo_options small_event() {
    demo_options options;
    options.cameras = 2;
    options.seconds = 2;
    return options;
}

std::uint32_t number_at(frame_reader& reader, double seconds) {
    const auto frame = reader.frame_at(seconds, 640, 360);
    if (!frame) return ~0u;
    const picture& shown = *frame.value();
    return read_block_code(shown.bytes.data(), shown.width, shown.height, shown.stride).value_or(~0u);
}

// Every movie part is there, as long as its record says, and its frames say where on the time line they
// stand.
void expect_numbered(const single_Vistel_CTR& vistel) {
    const movie_Part_DRONE_Offsets_Root parts = vistel.parts();
    const std::vector<double> starts = parts.starts();
    for (std::size_t index = 0; index < starts.size(); ++index) {
        const auto& part = parts.parts[index];
        const auto found = probe_movie(part.path);
        ASSERT_TRUE(found) << found.message();
        EXPECT_NEAR(found.value().duration, part.part_duration, 0.002);
        EXPECT_EQ(found.value().width, 1280);
        EXPECT_EQ(found.value().sound_rate, 48000);
        auto reader = frame_reader::open(part.path);
        ASSERT_TRUE(reader) << reader.message();
        const auto first = static_cast<std::uint32_t>(std::lround(starts[index] * 30));
        const auto frames = static_cast<std::uint32_t>(std::lround(part.part_duration * 30));
        for (const std::uint32_t frame : {0u, frames / 2, frames - 1, 3u})
            EXPECT_EQ(number_at(*reader.value(), frame / 30.0), first + frame) << part.path;
    }
}

TEST(demo_event, loads_and_its_frames_carry_their_numbers) {
    const temporary_folder folder;
    double told = 0;
    job work([&](double share) {
        EXPECT_GE(share, told);
        told = share;
    });
    const auto made = make_demo_event(folder.path(), small_event(), work);
    ASSERT_TRUE(made) << made.message();
    EXPECT_DOUBLE_EQ(told, 1);
    EXPECT_EQ(names_in_folder(folder.path()), std::vector<std::string>{"Demo Vault.VVault"});
    EXPECT_EQ(names_in_folder(made.value().vault),
              (std::vector<std::string>{"Single Videos", "Video Groups"}));

    const auto loaded = load_collection(made.value().collection);
    ASSERT_TRUE(loaded) << loaded.message();
    EXPECT_TRUE(loaded.value().messages.empty());
    const auto vistels = loaded.value().collection.vistels();
    ASSERT_EQ(vistels.size(), 2u);
    EXPECT_NE(vistels[0]->manual_start_offset(), vistels[1]->manual_start_offset());
    ASSERT_EQ(vistels[1]->parts().parts.size(), 2u);
    EXPECT_GT(vistels[1]->parts().parts[1].gap_before, 0.3);
    for (const auto& vistel : vistels) {
        EXPECT_NEAR(vistel->parts().duration(), 2, 1e-9);
        expect_numbered(*vistel);
    }

    const auto timeline = load_timeline(made.value().timeline);
    ASSERT_TRUE(timeline) << timeline.message();
    EXPECT_EQ(timeline.value().content.uuid, loaded.value().collection.linked_timeline());
    EXPECT_EQ(load_logger_settings(made.value().logger).linked_timeline_uuid, timeline.value().content.uuid);
    const auto buttons = load_button_dict(made.value().logger);
    ASSERT_TRUE(buttons) << buttons.message();
    EXPECT_GE(buttons.value().buttons.size(), 30u);

    job again;
    EXPECT_FALSE(make_demo_event(folder.path(), small_event(), again));  // it is there already
}

TEST(demo_event, leaves_nothing_behind_when_cancelled_or_refused) {
    const temporary_folder folder;
    job work([&work](double) { work.cancel(); });
    EXPECT_FALSE(make_demo_event(folder / "new", small_event(), work));
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));

    struct bad_case {
        int cameras, seconds;
        const char* name;
    };
    for (const bad_case& bad : {bad_case{0, 2, "A"}, bad_case{17, 2, "A"}, bad_case{1, 0, "A"},
                                bad_case{1, 2, ""}, bad_case{1, 2, "a/b"}}) {
        demo_options options;
        options.cameras = bad.cameras;
        options.seconds = bad.seconds;
        options.vault_name = bad.name;
        job unused;
        EXPECT_FALSE(make_demo_event(folder.path(), options, unused));
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

// How much of the sound changes from sample to sample: whistles do, crowds do not.
double shrillness(const demo::sound_mixer& sound, double from, double seconds) {
    const auto heard = sound.mix(from, static_cast<std::size_t>(seconds * demo::sound_rate));
    double sum = 0;
    for (std::size_t index = 2; index < heard.size(); index += 2)
        sum += std::pow(heard[index] - heard[index - 2], 2);
    return sum / seconds;
}

TEST(demo_sound, the_whistle_is_heard_by_all_cameras_at_its_moment) {
    const demo::game_record game = demo::simulate_game(240, 20);
    double whistle = -1;
    for (const demo::sound_cue& cue : game.cues())
        if (whistle < 0 && cue.kind == demo::cue_kind::whistle) whistle = cue.at;
    ASSERT_GE(whistle, 0);
    for (int camera = 0; camera < 4; ++camera) {
        const demo::sound_mixer sound(game, demo::film_camera_at(camera), 1);
        EXPECT_GT(shrillness(sound, whistle + 0.02, 0.1), 20 * shrillness(sound, whistle - 0.12, 0.1))
            << camera;
        // Heard in one piece or in two, it is the same sound.
        const auto whole = sound.mix(whistle - 0.05, 4800);
        const auto second = sound.mix(whistle, 2400);
        for (std::size_t index = 0; index < second.size(); index += 97)
            EXPECT_NEAR(whole[index + 4800], second[index], 0.02) << camera;
    }
}

}  // namespace
}  // namespace vistels
