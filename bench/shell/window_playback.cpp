// SPDX-License-Identifier: GPL-3.0-or-later
//
// Measures what a person sees and pays for while an event plays in the window, offscreen, at 1600x1000:
//   bench_shell_window_playback [--short] [--seconds N]
// Four cameras of 25, 30, 50 and 60 frames a second, then the demo event's four of 1280x720, N seconds each
// (60). The frame due at a tick follows from the collection's clock and the camera's offset, the frame shown
// from the block code in what the window has painted. The peer of the processor time is decoding the same
// movies and nothing else. Exits with 1 when a target is missed.

#include <QApplication>
#include <QEventLoop>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "app/event/event_player.h"
#include "app/event/open_event.h"
#include "app/start/start_up.h"
#include "app/vaults/content_keeper.h"
#include "demo/demo_event.h"
#include "media/frame_reader.h"
#include "shell/event/event_session.h"
#include "shell/kit/theme.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/program/qt_run_loop.h"
#include "shell/window/event_opener.h"
#include "shell/window/main_window.h"
#include "support/measure.h"
#include "support/painted_frames.h"
#include "support/temporary_folder.h"
#include "util/job_list.h"
#include "video/synchronised_playback.h"
#include "video/video_coll_Files.h"
#include "video/video_coll_Playback.h"

namespace {

using namespace vistels;
using bench::stop_with;

constexpr double least_right_ticks = 0.999;
constexpr double most_resident_bytes = 300e6;

struct camera {
    playback_vistel vistel;
    double frames_a_second;
    std::optional<long> last_seen = {};
    long left_out = 0;

    // The number of the frame that is due on the vistel's own time line; none between its movies.
    std::optional<long> due(double collection_seconds) const {
        const double seconds = collection_seconds + vistel.lead + frame_tolerance_seconds;
        const auto& parts = vistel.parts;
        const auto in_part = [&](const playback_part& one) {
            return seconds >= one.start && (seconds < one.start + one.duration || &one == &parts.back());
        };
        if (std::none_of(parts.begin(), parts.end(), in_part)) return std::nullopt;
        return std::lround(std::floor(seconds * frames_a_second));
    }
};

// One event in one window.
class shown_window {
  public:
    shown_window(const home_places& places, const std::string& folder, const std::vector<double>& rates)
        : content_(places, loop_), window_(places, loop_, content_, jobs_) {
        window_.resize(1600, 1000);
        window_.show();
        window_.opener().open_folder(folder);
        go_on_until([&] { return !window_.opener().is_at_work(); });
        if (!window_.session().is_open()) stop_with("The event cannot be opened");
        view_ = window_.findChild<collection_view*>();
        for (auto& vistel : playback_vistels_of(event().collection())) {
            cameras_.push_back({std::move(vistel), rates[std::min(cameras_.size(), rates.size() - 1)]});
        }
        go_on_until([&] { return window_.session().has_all_pictures() && playback().is_settled(); });
    }

    // Every tick's frames, read back from what the window painted for it.
    bool frames(double from, double to) {
        start_at(from);
        double shown = -1;  // what the last tick stood for
        int ticks = 0;
        int right = 0;
        tick_task looks(playback().ticks(), tick_step::time, [&] {
            if (shown >= 0) {
                ++ticks;
                if (all_right(shown)) ++right;
            }
        });
        tick_task notes(playback().ticks(), tick_step::views,
                        [&] { shown = playback().is_playing() ? playback().shown_time() : -1; });
        looks.start();
        notes.start();
        const double begun = loop_.time().seconds();
        playback().play();
        go_on_until([&] { return playback().collection_time() >= to || !playback().is_playing(); });
        const double lasted = loop_.time().seconds() - begun;
        playback().pause();
        const double all = lasted / playback().ticks().period_seconds();
        const double share = ticks == 0 ? 0 : static_cast<double>(right) / ticks;
        std::printf("ticks     of %.0f in %.1f s %d came; of those that show all the due frames %.3f %%%s\n",
                    all, lasted, ticks, share * 100, share < least_right_ticks ? "  MISSED" : "");
        for (const auto& one : cameras_) {
            std::printf("          %2.0f frames a second: %ld frames left out\n", one.frames_a_second,
                        one.left_out);
        }
        std::fflush(stdout);
        return share >= least_right_ticks;
    }

    // Processor time and memory while it plays, against decoding alone.
    bool cost(double from, double to) {
        start_at(from);
        const double idle = bench::resident_bytes("VmRSS");
        const double begun = loop_.time().seconds();
        const double before = bench::processor_seconds();
        double most = 0;
        const auto looks =
            loop_.start_timer(0.5, true, [&] { most = std::max(most, bench::resident_bytes("VmRSS")); });
        playback().play();
        go_on_until([&] { return playback().collection_time() >= to || !playback().is_playing(); });
        loop_.stop_timer(looks);
        const double used = bench::processor_seconds() - before;
        const double lasted = loop_.time().seconds() - begun;
        playback().pause();
        const double decoding = decode_alone(from, to);
        std::printf("processor %.1f %% of a core; decoding alone %.1f %%; %.2f times\n", used / lasted * 100,
                    decoding / lasted * 100, used / decoding);
        std::printf("memory    %.0f MB before, %.0f MB while playing%s\n", idle / 1e6, most / 1e6,
                    most > most_resident_bytes ? "  MISSED" : "");
        std::fflush(stdout);
        return most <= most_resident_bytes;
    }

  private:
    open_event& event() { return *window_.session().shown_event(); }
    synchronised_playback& playback() { return event().playback(); }

    template <class Done>
    void go_on_until(const Done& done) {
        const auto wakes = loop_.start_timer(0.05, true, [] {});
        while (!done()) QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        loop_.stop_timer(wakes);
    }

    void start_at(double from) {
        window_.session().player().seek(from);
        go_on_until([&] { return playback().is_settled(); });
    }

    bool all_right(double seconds) {
        bool good = true;
        for (auto& one : cameras_) {
            const auto painted = testing::painted_number(*view_, one.vistel.uuid);
            const auto seen = painted ? std::optional<long>(*painted) : std::nullopt;
            good = good && seen == one.due(seconds);
            if (seen && one.last_seen) one.left_out += std::max(0L, *seen - *one.last_seen - 1);
            one.last_seen = seen;
        }
        return good;
    }

    double decode_alone(double from, double to) {
        const double before = bench::processor_seconds();
        for (const auto& one : cameras_) {
            for (const auto& part : one.vistel.parts) {
                auto reader = frame_reader::open(part.path);
                if (!reader) stop_with(reader.message());
                const double first = std::max(from + one.vistel.lead - part.start, 0.0);
                if (!reader.value()->seek(reader.value()->stamp_at(first))) stop_with("A seek failed");
                const auto last = reader.value()->stamp_at(to + one.vistel.lead - part.start);
                while (reader.value()->next_stamp().value_or(last + 1) <= last) {
                    if (!reader.value()->advance()) stop_with("Decoding failed");
                }
            }
        }
        return bench::processor_seconds() - before;
    }

    qt_run_loop loop_;
    job_list jobs_{loop_};
    content_keeper content_;
    main_window window_;
    collection_view* view_ = nullptr;
    std::vector<camera> cameras_;
};

bool different_rates(const testing::temporary_folder& folder, double seconds) {
    const home_places places{folder / "a/Home Vault.VVault", folder / "a/Home Folder.VVault"};
    if (!start_up(places, 1, 0)) stop_with("The home folder cannot be made");
    const std::vector<double> rates{25, 30, 50, 60};
    std::vector<std::string> movies;
    for (const double rate : rates) {
        movies.push_back(folder / std::to_string(std::lround(rate)) + ".mp4");
        const auto made =
            testing::write_block_coded_movie(movies.back(), 1280, static_cast<int>(rate), seconds);
        if (!made) stop_with(made.message());
    }
    const std::string collection = places.home_vault + "/Rates";
    job work;
    const auto made = new_collection(collection, "Rates", movies, movies_as::vistel_each, work);
    if (!made) stop_with(made.message());
    std::printf("four cameras of 25, 30, 50 and 60 frames a second\n");
    shown_window shown(places, collection, rates);
    return shown.frames(0, seconds - 0.2);
}

bool demo(const testing::temporary_folder& folder, double seconds) {
    const home_places places{folder / "b/Home Vault.VVault", folder / "b/Home Folder.VVault"};
    if (!start_up(places, 1, 0)) stop_with("The home folder cannot be made");
    job work;
    demo_options options;
    // The cameras start some seconds apart.
    options.seconds = static_cast<int>(seconds) + 6;
    const auto made = make_demo_event(folder / "b", options, work);
    if (!made) stop_with(made.message());
    std::printf("the demo event: four cameras of 1280x720, 30 frames a second\n");
    shown_window shown(places, made.value().collection, {30});
    const bool right = shown.frames(0, seconds - 0.2);
    return shown.cost(0, seconds - 0.2) && right;
}

}  // namespace

int main(int count, char** arguments) {
    const bool is_short = bench::take_short(count, arguments);
    double seconds = is_short ? 2 : 60;
    if (count == 3 && std::string(arguments[1]) == "--seconds") seconds = std::atof(arguments[2]);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(count, arguments);
    use_theme(application, theme_choice::dark);
    const testing::temporary_folder folder;
    const bool rates_met = different_rates(folder, seconds);
    const bool demo_met = demo(folder, seconds);
    return is_short || (rates_met && demo_met) ? 0 : 1;
}
