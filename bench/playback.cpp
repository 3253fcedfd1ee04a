// SPDX-License-Identifier: GPL-3.0-or-later
//
// Measures synchronised playback of a collection without a window.
//   bench_playback [--short] [--seconds N] [COLLECTION]
// Without a collection it makes a demo event of N seconds. The frame that is due comes from the packets' time
// stamps, the frame shown from the block code in its pixels. Exits with 1 when a target is missed, with 2
// when a frame was not found.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "demo/block_code.h"
#include "demo/demo_event.h"
#include "media/frame_reader.h"
#include "media/packet_index.h"
#include "support/measure.h"
#include "util/job.h"
#include "util/plain_run_loop.h"
#include "video/synchronised_playback.h"
#include "video/video_coll_LOAD.h"
#include "video/video_coll_Playback.h"

namespace {

using namespace vistels;
using bench::processor_seconds;
using bench::take_short;

constexpr double least_right_ticks = 0.995;
constexpr double most_processor_ratio = 1.4;
constexpr double most_step_back_seconds = 0.020;
// As a window of 1920x1080 asks for with four vistels.
constexpr int picture_width = 477;
constexpr int picture_height = 268;

double percentile(std::vector<double> values, double share) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

void stop_with(const std::string& message) {
    std::fprintf(stderr, "%s\n", message.c_str());
    std::exit(2);
}

constexpr int frames_a_second = 30;
constexpr long no_frame = -1;  // between two parts

// One vistel with the time stamps of its movies.
struct camera {
    playback_vistel vistel;
    std::vector<packet_index> indices;  // one for each part

    // The frame due at a time on the vistel's own time line, as the block code numbers it.
    long due_at(double seconds) const {
        long due = no_frame;
        for (std::size_t k = 0; k < indices.size(); ++k) {
            const auto& part = vistel.parts[k];
            const double within = seconds + frame_tolerance_seconds - part.start;
            const bool holds = within >= 0 && within < part.duration;
            if (!holds) continue;
            const double stamp = indices[k].seconds_of(indices[k].frame_at(seconds - part.start));
            due = std::lround((part.start + stamp) * frames_a_second);
        }
        return due;
    }
};

camera open_camera(const playback_vistel& vistel) {
    camera made{vistel, {}};
    for (const auto& part : vistel.parts) {
        auto index = read_packet_index(part.path);
        if (!index.ok()) stop_with(index.message());
        made.indices.push_back(std::move(index).value());
    }
    return made;
}

class playback_bench {
  public:
    playback_bench(std::vector<camera> cameras, bool is_short)
        : is_short_(is_short), cameras_(std::move(cameras)), playback_(loop_) {
        std::vector<playback_vistel> vistels;
        for (const auto& camera : cameras_) vistels.push_back(camera.vistel);
        playback_.set_volume(0);
        playback_.set_vistels(vistels);
        for (const auto& camera : cameras_) {
            playback_.set_view_size(camera.vistel.uuid, picture_width, picture_height);
        }
    }

    bool run() {
        seek_and_wait(0);
        tell_memory("standing still");
        bool good = play_at(1);
        good = play_at(2) && good;
        tell_memory("after playing");
        (void)play_at(-1);  // decoding comes first: no target
        good = processor_time() && good;
        good = seeks() && good;
        good = steps_back() && good;
        tell_memory("after stepping back");
        return good;
    }
    // Every frame that was looked for at rest was found.
    bool finds_all() const { return finds_all_; }

  private:
    bool is_right(const camera& camera, double collection_seconds, bool tell) {
        const auto shown = playback_.picture(camera.vistel.uuid);
        const long due = camera.due_at(collection_seconds + camera.vistel.lead);
        long read = no_frame;
        if (shown) {
            const auto code =
                read_block_code(shown->bytes.data(), shown->width, shown->height, shown->stride);
            constexpr long unreadable = -2;
            read = code ? static_cast<long>(*code) : unreadable;
        }
        if (tell && read != due) {
            std::printf("  %s at %.4f: frame %ld instead of %ld\n", camera.vistel.uuid.c_str(),
                        collection_seconds, read, due);
        }
        return read == due;
    }

    bool all_right(double collection_seconds, bool tell) {
        return std::all_of(cameras_.begin(), cameras_.end(),
                           [&](const camera& camera) { return is_right(camera, collection_seconds, tell); });
    }

    void seek_and_wait(double seconds) {
        bool done = false;
        playback_.seek(seconds, [&] { done = true; });
        if (!loop_.run_until([&] { return done; }, 20)) stop_with("A seek did not come to its end");
    }

    double end() const {
        double shortest = 1e9;
        for (const auto& camera : cameras_) {
            const auto& last = camera.vistel.parts.back();
            shortest = std::min(shortest, last.start + last.duration - camera.vistel.lead);
        }
        return shortest;
    }

    static void tell_memory(const char* when) {
        std::printf("memory    %-36s %7.0f MB, %.0f MB at most before\n", when,
                    bench::resident_bytes("VmRSS") / 1e6, bench::resident_bytes("VmHWM") / 1e6);
    }

    bool play_at(double rate) {
        const double far = end() - 0.2;
        seek_and_wait(rate > 0 ? 0 : far);
        playback_.set_rate(rate);
        int ticks = 0;
        int right = 0;
        const auto timer = loop_.start_timer(1.0 / 60, true, [&] {
            // The frame is judged by the very time that it was chosen for.
            const double before = playback_.collection_time();
            playback_.tick();
            const double after = playback_.collection_time();
            if (!playback_.is_playing()) return;
            ++ticks;
            if (all_right(before, false) || all_right(after, false)) ++right;
        });
        playback_.play();
        const double until = rate > 0 ? far : 0.2;
        loop_.run_until([&] { return (playback_.collection_time() - until) * rate >= 0; }, 600);
        playback_.pause();
        loop_.stop_timer(timer);
        const double share = ticks == 0 ? 0 : static_cast<double>(right) / ticks;
        std::printf("rate %-4g ticks that show all the due frames   %7.2f %%  (of %d; target %.1f %%)\n",
                    rate, share * 100, ticks, least_right_ticks * 100);
        return share >= least_right_ticks;
    }

    bool processor_time() {
        const double until = end() - 0.2;
        seek_and_wait(0);
        playback_.set_rate(1);
        const double before_playing = processor_seconds();
        playback_.play();
        loop_.run_until([&] { return playback_.collection_time() >= until; }, 600);
        playback_.pause();
        const double playing = processor_seconds() - before_playing;

        const double before_decoding = processor_seconds();
        for (const auto& camera : cameras_) {
            for (const auto& part : camera.vistel.parts) decode(part, camera.vistel.lead, until);
        }
        const double decoding = processor_seconds() - before_decoding;
        std::printf(
            "rate 1    processor time against decoding alone %7.2f    (%.2f s to %.2f s; target %.1f)\n",
            playing / decoding, playing, decoding, most_processor_ratio);
        return playing / decoding <= most_processor_ratio;
    }

    // What playing up to `until` needs of one movie, decoded and nothing else.
    static void decode(const playback_part& part, double lead, double until) {
        auto reader = frame_reader::open(part.path);
        if (!reader.ok()) stop_with(reader.message());
        const double from = std::max(lead - part.start, 0.0);
        if (!reader.value()->seek(reader.value()->stamp_at(from)).ok()) stop_with("A seek failed");
        const std::int64_t last = reader.value()->stamp_at(lead + until - part.start);
        while (reader.value()->next_stamp().value_or(last + 1) <= last) {
            if (!reader.value()->advance().ok()) stop_with("Decoding failed");
        }
    }

    bool seeks() {
        std::mt19937 random(7);
        std::uniform_real_distribution<double> anywhere(0, end());
        std::vector<double> lasted;
        int wrong = 0;
        for (int i = 0; i < (is_short_ ? 10 : 100); ++i) {
            const double to = anywhere(random);
            const double before = loop_.time().seconds();
            seek_and_wait(to);
            lasted.push_back(loop_.time().seconds() - before);
            if (!all_right(to, true)) ++wrong;
        }
        std::printf(
            "seek      wrong frames %d of %zu; median %.1f ms, 95 %% within %.1f ms (target 0 wrong)\n",
            wrong, lasted.size(), percentile(lasted, 0.5) * 1e3, percentile(lasted, 0.95) * 1e3);
        finds_all_ = finds_all_ && wrong == 0;
        return wrong == 0;
    }

    // One frame back, to the moment at which all four show it.
    double step_back(int& wrong) {
        bool done = false;
        const camera& first = cameras_.front();
        const long shown = first.due_at(playback_.collection_time() + first.vistel.lead);
        const double before = loop_.time().seconds();
        playback_.step(-1, [&] { done = true; });
        if (!loop_.run_until([&] { return done; }, 20)) stop_with("A step did not come to its end");
        const double lasted = loop_.time().seconds() - before;
        const double now = playback_.collection_time();
        const bool is_one_back = shown == 0 || first.due_at(now + first.vistel.lead) == shown - 1;
        if (!is_one_back || !all_right(now, true)) ++wrong;
        return lasted;
    }

    bool steps_back() {
        std::vector<double> after_playing;
        std::vector<double> after_stepping;
        int wrong = 0;
        std::mt19937 random(11);
        std::uniform_real_distribution<double> anywhere(end() / 10, end() * 0.9 - 0.5);
        for (int i = 0; i < (is_short_ ? 1 : 12); ++i) {
            seek_and_wait(anywhere(random));
            playback_.play();
            const double until = playback_.collection_time() + 0.5;
            loop_.run_until([&] { return playback_.collection_time() >= until; }, 10);
            playback_.pause();
            loop_.run_until([&] { return playback_.is_settled(); }, 10);
            after_playing.push_back(step_back(wrong));
            for (int step = 0; step < (is_short_ ? 5 : 75); ++step) {
                // As fast as a held key repeats.
                const double next = loop_.time().seconds() + 0.033;
                loop_.run_until([&] { return loop_.time().seconds() >= next; }, 1);
                after_stepping.push_back(step_back(wrong));
            }
        }
        const double playing = percentile(after_playing, 0.95);
        const double stepping = percentile(after_stepping, 0.95);
        std::printf("one back  after playing  median %.2f ms, 95 %% within %.2f ms  (target %.0f ms)\n",
                    percentile(after_playing, 0.5) * 1e3, playing * 1e3, most_step_back_seconds * 1e3);
        std::printf(
            "one back  after stepping median %.2f ms, 95 %% within %.2f ms, slowest %.2f ms; %d wrong\n",
            percentile(after_stepping, 0.5) * 1e3, stepping * 1e3, percentile(after_stepping, 1) * 1e3,
            wrong);
        finds_all_ = finds_all_ && wrong == 0;
        return wrong == 0 && playing <= most_step_back_seconds && stepping <= most_step_back_seconds;
    }

    const bool is_short_;
    bool finds_all_ = true;
    plain_run_loop loop_;
    std::vector<camera> cameras_;
    synchronised_playback playback_;
};

}  // namespace

int main(int count, char** arguments) {
    const bool is_short = take_short(count, arguments);
    demo_options options;
    options.seconds = is_short ? 2 : 30;
    options.cameras = is_short ? 2 : 4;
    std::string collection;
    for (int i = 1; i < count; ++i) {
        const std::string argument = arguments[i];
        if (argument == "--seconds" && i + 1 < count) {
            options.seconds = std::atoi(arguments[++i]);
        } else {
            collection = argument;
        }
    }
    std::filesystem::path folder;
    if (collection.empty()) {
        std::string pattern = std::filesystem::temp_directory_path() / "vistels-bench-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) stop_with("No temporary folder can be made");
        folder = pattern;
        std::printf("making a demo event of %d s ...\n", options.seconds);
        job work;
        auto made = make_demo_event(folder, options, work);
        if (!made.ok()) stop_with(made.message());
        collection = made.value().collection;
    }
    const auto loaded = load_collection(collection);
    if (!loaded.ok()) stop_with(loaded.message());
    bool good = false;
    {
        std::vector<camera> cameras;
        for (const auto& vistel : playback_vistels_of(loaded.value().collection)) {
            cameras.push_back(open_camera(vistel));
        }
        playback_bench measured(std::move(cameras), is_short);
        good = measured.run();
        if (!measured.finds_all()) stop_with("Frames other than those that are due were shown");
    }
    if (!folder.empty()) std::filesystem::remove_all(folder);
    return good || is_short ? 0 : 1;
}
