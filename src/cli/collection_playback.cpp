// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/collection_playback.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>

#include "cli/command_failures.h"
#include "cli/headless_playback.h"
#include "media/picture.h"
#include "video/playback_tally.h"

namespace vistels {

namespace {

constexpr int play_width = 640;
constexpr int play_height = 360;
constexpr int default_seek_count = 11;

struct frame_values {
    std::string folder, out, vistel;
    double time = 0;
};

struct play_values {
    std::string folder;
    double from = 0;
    double seconds = 0;
    double rate = 1;
    bool has_from = false;
    bool has_seconds = false;
    bool tells_health = false;
};

struct seek_values {
    std::string folder, times;
};

property_value time_or_null(const std::optional<double>& seconds) {
    return seconds ? property_value(*seconds) : property_value();
}

result<command_outcome> run_frame(const frame_values& values, command_line& line) {
    headless_playback shown(line.command_job());
    if (auto opened = shown.open(values.folder, line.places(), values.vistel); !opened) return opened.error();
    if (auto settled = shown.seek(values.time); !settled) return settled.error();
    const auto composed = shown.compose();
    if (!composed) return composed.error();
    if (auto written = write_png(composed.value(), values.out); !written) return written.error();
    property_array vistels;
    for (const auto& vistel : shown.vistels()) {
        property_dictionary one;
        one.add("uuid", vistel.uuid);
        one.add("movie_time", shown.playback().collection_time() + vistel.lead);
        one.add("frame_time", time_or_null(shown.frame_time(vistel.uuid)));
        const auto problem = shown.problem(vistel.uuid);
        if (problem) one.add("problem", problem.message());
        vistels.emplace_back(std::move(one));
    }
    property_dictionary printed;
    printed.add("width", composed.value().width);
    printed.add("height", composed.value().height);
    printed.add("vistels", std::move(vistels));
    return command_outcome{std::move(printed)};
}

result<command_outcome> run_seek(const seek_values& values, command_line& line) {
    headless_playback shown(line.command_job());
    if (auto opened = shown.open(values.folder, line.places(), {}); !opened) return opened.error();
    shown.set_view_sizes(play_width, play_height);
    std::vector<double> times;
    if (values.times.empty()) {
        const double first = shown.playback().first_time();
        const double step = (shown.playback().last_time() - first) / default_seek_count;
        for (int index = 0; index < default_seek_count; ++index) times.push_back(first + index * step);
    } else {
        times = numbers_from_list(values.times).value();
    }
    property_array printed;
    for (const double time : times) {
        const double begun = shown.clock_seconds();
        if (auto settled = shown.seek(time); !settled) return settled.error();
        property_dictionary one;
        one.add("time", time);
        one.add("milliseconds", (shown.clock_seconds() - begun) * 1000);
        property_dictionary frame_times;
        for (const auto& vistel : shown.vistels()) {
            frame_times.add(vistel.uuid, time_or_null(shown.frame_time(vistel.uuid)));
        }
        one.add("frame_times", std::move(frame_times));
        printed.emplace_back(std::move(one));
        line.command_job().set_progress(static_cast<double>(printed.size()) /
                                        static_cast<double>(times.size()));
    }
    return command_outcome{std::move(printed)};
}

result<command_outcome> run_play(const play_values& values, command_line& line) {
    headless_playback shown(line.command_job());
    if (auto opened = shown.open(values.folder, line.places(), {}); !opened) return opened.error();
    shown.set_view_sizes(play_width, play_height);
    auto& playback = shown.playback();
    playback.set_rate(values.rate);
    // At 0 every camera has begun.
    const double from = values.has_from ? values.from : values.rate < 0 ? playback.last_time() : 0;
    if (auto settled = shown.seek(from); !settled) return settled.error();
    const double whole = playback.last_time() - playback.first_time();
    const double seconds = values.has_seconds ? values.seconds : whole / std::abs(playback.rate()) + 1;
    playback_tally tally(shown.vistels(), playback);
    const double begun = shown.clock_seconds();
    playback.play();
    shown.run(seconds, [&] {
        if (seconds > 0)
            line.command_job().set_progress(std::min((shown.clock_seconds() - begun) / seconds, 1.0));
        return !playback.is_playing();
    });
    const double played = shown.clock_seconds() - begun;
    playback.pause();
    if (line.command_job().is_cancelled()) return playing_was_cancelled(values.folder);
    property_dictionary printed;
    printed.add("seconds", played);
    printed.add("rate", playback.rate());
    tally.add_to(printed);
    if (values.tells_health) tally.add_health_to(printed);
    return command_outcome{std::move(printed)};
}

void register_frame(CLI::App& collection, command_line& line) {
    const auto values = std::make_shared<frame_values>();
    CLI::App* command = line.command(collection, "frame", "the picture at a collection time",
                                     [values, &line] { return run_frame(*values, line); });
    command->add_option("FOLDER", values->folder, "the collection's folder")->required();
    add_number(command, "TIME", values->time, "collection time in seconds")->required();
    command->add_option("OUT", values->out, "PNG file to write")->required();
    command->add_option("--vistel", values->vistel, "UUID or number of one vistel; else all as laid out");
}

void register_play(CLI::App& collection, command_line& line) {
    const auto values = std::make_shared<play_values>();
    CLI::App* command = line.command(collection, "play", "play without a window, in real time",
                                     [values, &line] { return run_play(*values, line); });
    command->add_option("FOLDER", values->folder, "the collection's folder")->required();
    command->add_flag(
        "--health", values->tells_health,
        "prints for each vistel also \"decode_milliseconds\", how long a frame took to be read lately, "
        "and \"difference\", the seconds from the clock to what is shown at the end");
    add_number(command, "--from", values->from, "collection time to begin at")->each([values](const auto&) {
        values->has_from = true;
    });
    add_number(command, "--seconds", values->seconds, "how long to play")
        ->check([](const std::string& text) {
            const auto seconds = numbers_from_list(text);
            const bool is_negative = seconds && seconds.value().front() < 0;
            return is_negative ? std::string("the time must not be negative") : std::string();
        })
        ->each([values](const auto&) { values->has_seconds = true; });
    add_number(command, "--rate", values->rate, "1 is normal speed, negative plays backwards")
        ->check([](const std::string& text) {
            const auto rate = numbers_from_list(text);
            return rate && rate.value() == std::vector<double>{0} ? std::string("the rate must not be 0")
                                                                  : std::string();
        });
}

void register_seek(CLI::App& collection, command_line& line) {
    const auto values = std::make_shared<seek_values>();
    CLI::App* command = line.command(collection, "seek", "seek all vistels exactly to each time",
                                     [values, &line] { return run_seek(*values, line); });
    command->add_option("FOLDER", values->folder, "the collection's folder")->required();
    command->add_option("--times", values->times, "collection times joined by commas")
        ->type_name("NUMBER,...")
        ->check([](const std::string& text) { return numbers_from_list(text).message(); });
}

}  // namespace

void register_collection_playback(CLI::App& collection, command_line& line) {
    register_frame(collection, line);
    register_play(collection, line);
    register_seek(collection, line);
}

}  // namespace vistels
