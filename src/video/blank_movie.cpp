// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/blank_movie.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "media/coded_pictures.h"
#include "media/movie_information.h"
#include "media/movie_writer.h"
#include "util/file_failures.h"
#include "util/file_system.h"
#include "util/uuid.h"
#include "util/wait_watch.h"
#include "video/collection_failures.h"

namespace vistels {

namespace {

constexpr const char* temporary_ending = " temp.mov";
constexpr const char* queue_name = "join timelines queue";
constexpr int width = 320;
constexpr int height = 180;
constexpr int bytes_a_pixel = 4;
constexpr int frame_rate = 25;
constexpr double frame_seconds = 1.0 / frame_rate;
// Of one movie, however long it is: a still picture needs no more to be sought in.
constexpr int most_pictures = 200;

std::string without_ending(const std::string& path) {
    return path.substr(0, path.rfind('.'));
}

result<void> write_still_movie(const std::string& path) {
    movie_writer_settings settings;
    settings.width = width;
    settings.height = height;
    settings.frame_rate = frame_rate;
    settings.video_bit_rate = 50'000;
    settings.preset = "ultrafast";
    settings.gop_frames = 1;  // each can be shown at any time
    settings.b_frames = 0;
    settings.threads = 1;
    auto writer = movie_writer::create(path, settings);
    if (!writer) return writer.error();
    const std::vector<std::uint8_t> black(static_cast<std::size_t>(width) * height * bytes_a_pixel);
    for (int n = 0; n < frame_rate; ++n) {
        if (auto added = writer.value()->add_picture(black.data(), width * bytes_a_pixel); !added)
            return added;
    }
    return writer.value()->finish();
}

// At equal distances, the last one frame before the end.
std::vector<double> picture_times(double seconds) {
    const double last = std::max(seconds - frame_seconds, 0.0);
    const int steps = std::clamp(static_cast<int>(last), last > 0 ? 1 : 0, most_pictures);
    std::vector<double> times{0};
    for (int step = 1; step <= steps; ++step) times.push_back(last * step / steps);
    return times;
}

result<void> put_in_place(const std::string& temporary, const std::string& path) {
    const int fault = machine_files().rename(temporary, path);
    if (fault == 0) return {};
    machine_files().remove(temporary);
    return file_could_not_be_made(path, system_failure(fault));
}

}  // namespace

blank_vistel_movie::blank_vistel_movie(const std::string& folder)
    : folder_(folder), path_(path_join(folder, file_name)) {}

void blank_vistel_movie::prepare() {
    const std::lock_guard lock(mutex_);
    if (started_ && !done_) return;
    started_ = true;
    done_ = false;
    if (!queue_) queue_ = std::make_unique<serial_queue>(queue_name);
    queue_->post([this] {
        const auto made = make();
        const std::lock_guard finished(mutex_);
        problem_ = made.error();
        done_ = true;
        is_done_.notify_all();
    });
}

result<std::string> blank_vistel_movie::wait_for_movie() {
    prepare();
    const wait_note note("blank movie", path_);
    std::unique_lock lock(mutex_);
    is_done_.wait(lock, [this] { return done_; });
    if (problem_) return blank_movie_not_made(problem_);
    return path_;
}

// Another program may make it at the same time: each writes a file of its own. One that is an hour old
// belongs to nobody any more.
result<void> blank_vistel_movie::make() {
    const auto there = probe_movie(path_);
    if (there && there.value().duration > 0) return {};
    if (auto made = make_folders(folder_); !made) return made;
    remove_left_over();
    const std::string temporary = without_ending(path_) + " " + new_uuid() + temporary_ending;
    if (auto written = write_still_movie(temporary); !written) return written;
    return put_in_place(temporary, path_);
}

void blank_vistel_movie::remove_left_over() const {
    const auto now = std::filesystem::file_time_type::clock::now();
    const std::string lead = without_ending(file_name) + " ";
    for (const auto& name : names_in_folder(folder_)) {
        if (!name.starts_with(lead) || !name.ends_with(temporary_ending)) continue;
        std::error_code unknown;
        const std::string path = path_join(folder_, name);
        const auto written = std::filesystem::last_write_time(path, unknown);
        if (!unknown && now - written > std::chrono::hours(1)) machine_files().remove(path);
    }
}

result<void> blank_vistel_movie::write(const std::string& path, double seconds, job& work) {
    if (!(seconds > 0)) return blank_movie_not_made(movie_has_no_length(path));
    const auto blank = wait_for_movie();
    if (!blank) return blank.error();
    const std::string temporary = without_ending(path) + temporary_ending;
    auto written = show_coded_pictures(blank.value(), temporary, picture_times(seconds), seconds, work);
    if (written) written = put_in_place(temporary, path);
    if (!written) return blank_movie_not_made(written.error());
    work.set_progress(1);
    return {};
}

}  // namespace vistels
