// SPDX-License-Identifier: GPL-3.0-or-later
//
// Measures edits of long rows, and the memory of a long timeline.
//   bench_timeline_edits [--short] [--clips N] [--memory-clips N]
// Each kind of edit, planned beforehand and done by apply_edit, is compared with the same in a std::map of
// the starts, batch by batch in turn, in processor time; medians. Exits with 1 when a target is missed.

#include <malloc.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "document/change_journal.h"
#include "support/measure.h"
#include "timeline/edits/timeline_edit.h"
#include "timeline/files/timeline_form.h"
#include "util/json.h"
#include "util/uuid.h"

namespace {

using namespace vistels;
using bench::median;
using bench::seconds_of;
using bench::take_short;

constexpr double most_edit_ratio = 10;
constexpr double most_bytes = 1.2e9;
constexpr std::size_t most_bytes_for_clips = 1'000'000;
constexpr double most_append_seconds = 50e-6;
constexpr double most_load_seconds = 0.040;
constexpr std::size_t clips_for_load = 100'000;
constexpr int batches = 60;
constexpr int batch = 100;

double percentile(std::vector<double> values, double share) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

void stop_with(const std::string& message) {
    std::fprintf(stderr, "%s\n", message.c_str());
    std::exit(2);
}

bool all_met = true;

const char* verdict(bool met) {
    all_met = all_met && met;
    return met ? "" : "  MISSED";
}

constexpr double seconds_per_clip = 7;

sxy_CLIP clip_at(double start) {
    sxy_CLIP clip;
    clip.set_id(new_uuid());
    clip.set_secs_start(start);
    clip.set_secs_end(start + 4);
    return clip;
}

timeline_snapshot long_timeline(std::size_t rows, std::size_t clips_in_row, int qualifiers) {
    timeline_snapshot made;
    for (std::size_t number = 0; number < rows; ++number) {
        auto row = std::make_shared<sxy_ROW>();
        row->set_uuid(shared_text(new_uuid()));
        row->set_name("Row " + std::to_string(number));
        std::vector<clip_pointer> clips;
        clips.reserve(clips_in_row);
        for (std::size_t n = 0; n < clips_in_row; ++n) {
            auto clip = std::make_shared<sxy_CLIP>(clip_at(static_cast<double>(n) * seconds_per_clip));
            clip->set_row_uuid_in_clip(row->uuid());
            clip->set_row_category_in_clip(shared_text("category " + std::to_string(number % 5)));
            qual_ROOT all;
            for (int q = 0; q < qualifiers; ++q) {
                qual_ITEM item;
                item.set_uuid(new_uuid());
                item.set_name(shared_text("name " + std::to_string((n + static_cast<std::size_t>(q)) % 30)));
                item.set_category(shared_text("players"));
                item.set_time(clip->secs_start() + 1);
                item.set_real_local_time("14:05:09");
                all.push_back(item);
            }
            if (!all.empty()) clip->set_qualifiers(std::move(all));
            clips.push_back(std::move(clip));
        }
        row->clips().assign(std::move(clips));
        made.rows.push_back(std::move(row));
    }
    return made;
}

// A timeline of two rows with as many clips, and a map of the starts of each.
class contest {
  public:
    explicit contest(std::size_t clips)
        : timeline_(long_timeline(2, clips, 2)), end_(static_cast<double>(clips) * seconds_per_clip) {
        for (std::size_t row = 0; row < 2; ++row) {
            for (const auto& clip : timeline_.rows()[row]->clips()) {
                starts_[row].emplace(clip->secs_start(), clip.get());
            }
        }
    }

    struct outcome {
        double edit = 0;  // seconds, median
        double map = 0;
    };

    outcome insert() {
        return compare([&] {
            const double start = any_start();
            return contender{operation::insert_clip{row(0), clip_at(start)},
                             [this, start] { starts_[0].emplace(start, nullptr); },
                             [this, start] { starts_[0].erase(start); }};
        });
    }
    outcome change() {
        return compare([&] {
            const auto clip = any_clip();
            const double from = clip->secs_start();
            const double start = any_start();
            operation::change_clip one{clip->id(), {}, {}};
            one.set.add("time_start", start);
            one.set.add("time_end", start + 4);
            return contender{std::move(one), [this, from, start] { move_start(0, from, 0, start); },
                             [this, from, start] { move_start(0, start, 0, from); }};
        });
    }
    outcome remove() {
        return compare([&] {
            const auto clip = any_clip();
            const double from = clip->secs_start();
            return contender{operation::remove_clip{clip->id()}, [this, from] { starts_[0].erase(from); },
                             [this, from] { starts_[0].emplace(from, nullptr); }};
        });
    }
    outcome move() {
        return compare([&] {
            const auto clip = any_clip();
            const double from = clip->secs_start();
            return contender{operation::move_clip{clip->id(), row(1)},
                             [this, from] { move_start(0, from, 1, from + 0.1); },
                             [this, from] { move_start(1, from + 0.1, 0, from); }};
        });
    }
    // The first edit after a snapshot was taken, which is kept until after the edit.
    double edit_after_snapshot() {
        std::vector<double> seconds;
        for (int n = 0; n < batches; ++n) {
            const auto edit = edit_of(operation::insert_clip{row(0), clip_at(any_start())});
            const auto kept = timeline_.snapshot();
            timeline_edit back;
            seconds.push_back(seconds_of([&] { back = apply(edit); }));
            apply(back);
        }
        return median(std::move(seconds));
    }

  private:
    struct contender {
        operation::any edit;
        std::function<void()> map;
        std::function<void()> map_back;
    };

    void move_start(std::size_t from_row, double from, std::size_t to_row, double to) {
        starts_[from_row].erase(from);
        starts_[to_row].emplace(to, nullptr);
    }
    shared_text row(std::size_t index) const { return timeline_.rows()[index]->uuid(); }
    double any_start() { return std::uniform_real_distribution<double>(0, end_)(random_); }
    // A clip of the first row that no edit planned before uses.
    clip_pointer any_clip() {
        const auto& clips = timeline_.rows()[0]->clips();
        while (true) {
            auto clip = clips[random_() % clips.size()];
            if (used_.insert(clip.get()).second) return clip;
        }
    }
    static timeline_edit edit_of(operation::any one) { return {"Edit", "", {std::move(one)}}; }

    timeline_edit apply(const timeline_edit& edit) {
        change_set touched;
        auto inverse = apply_edit(timeline_, edit, touched);
        if (!inverse) stop_with("an edit could not be done");
        return std::move(inverse).value();
    }

    // Each batch is taken back, so that all find rows of the same length.
    outcome compare(const std::function<contender()>& plan) {
        std::vector<double> edit_seconds;
        std::vector<double> map_seconds;
        for (int n = 0; n < batches; ++n) {
            used_.clear();
            std::vector<contender> both;
            std::vector<timeline_edit> edits;
            for (int k = 0; k < batch; ++k) {
                both.push_back(plan());
                edits.push_back(edit_of(std::move(both.back().edit)));
            }
            std::vector<timeline_edit> back;
            back.reserve(batch);
            edit_seconds.push_back(seconds_of([&] {
                for (const auto& edit : edits) back.push_back(apply(edit));
            }));
            map_seconds.push_back(seconds_of([&] {
                for (const auto& one : both) one.map();
            }));
            for (auto one = back.rbegin(); one != back.rend(); ++one) apply(*one);
            for (const auto& one : both) one.map_back();
        }
        return {median(std::move(edit_seconds)) / batch, median(std::move(map_seconds)) / batch};
    }

    sxy_DATA_root timeline_;
    std::map<double, const sxy_CLIP*> starts_[2];
    double end_;
    std::mt19937_64 random_{7};
    std::set<const sxy_CLIP*> used_;
};

void compare_edits(std::size_t clips, bool is_target) {
    contest one(clips);
    const auto print = [&](const char* kind, contest::outcome found) {
        const double ratio = found.edit / found.map;
        std::printf("  %-22s %8.2f us   std::map %6.2f us   ratio %5.1f%s\n", kind, found.edit * 1e6,
                    found.map * 1e6, ratio, is_target ? verdict(ratio <= most_edit_ratio) : "");
    };
    std::printf("rows of %zu clips\n", clips);
    print("insert", one.insert());
    print("change of times", one.change());
    print("delete", one.remove());
    print("move to another row", one.move());
    std::printf("  %-22s %8.2f us\n", "after a snapshot", one.edit_after_snapshot() * 1e6);
}

void bulk_insert(std::size_t clips) {
    sxy_DATA_root timeline(long_timeline(1, 10, 0));
    timeline_edit edit{"Import", "", {}};
    for (std::size_t n = 0; n < clips; ++n) {
        edit.operations.emplace_back(operation::insert_clip{
            timeline.rows()[0]->uuid(), clip_at(static_cast<double>(n * 7919 % clips) * seconds_per_clip)});
    }
    const double seconds = seconds_of([&] {
        change_set touched;
        if (!apply_edit(timeline, edit, touched)) stop_with("the import could not be done");
    });
    const double written = seconds_of([&] {
        if (write_json(write_edit(edit), json_layout::one_line).empty()) stop_with("nothing was written");
    });
    std::printf("one edit that inserts %zu clips: %.1f ms, and %.1f ms to write it for the journal\n", clips,
                seconds * 1e3, written * 1e3);
}

void build_root(std::size_t clips) {
    std::vector<double> seconds;
    for (int n = 0; n < 5; ++n) {
        auto loaded = long_timeline(20, clips / 20, 2);
        seconds.push_back(seconds_of([&] { const sxy_DATA_root timeline(std::move(loaded)); }));
    }
    const double found = median(std::move(seconds));
    std::printf("timeline of %zu loaded clips: %.1f ms%s\n", clips, found * 1e3,
                clips == clips_for_load ? verdict(found <= most_load_seconds) : "");
}

void append_to_journal() {
    std::string folder = (std::filesystem::temp_directory_path() / "bench_timeline_edits_XXXXXX").string();
    if (!mkdtemp(folder.data())) stop_with("no temporary folder could be made");
    {
        auto journal = change_journal::start(folder, timeline_form, 1, {}, 0);
        if (!journal) stop_with(journal.message());
        const shared_text row(new_uuid());
        auto clip = clip_at(1234.567890123);
        clip.set_row_uuid_in_clip(row);
        const timeline_edit begin{"Shot", new_uuid(), {operation::begin_clip{row, clip}}};
        const timeline_edit finish{"Shot", new_uuid(), {operation::finish_clip{clip.id(), 12.5, 19.25}}};
        const timeline_edit remove{"Delete Clip", "", {operation::remove_clip{clip.id()}}};
        for (const auto& [kind, edit] :
             {std::pair("press", &begin), std::pair("release", &finish), std::pair("delete", &remove)}) {
            std::vector<double> processor;
            std::vector<double> wall;
            for (int n = 0; n < 2000; ++n) {
                timespec from{};
                timespec to{};
                clock_gettime(CLOCK_MONOTONIC, &from);
                processor.push_back(seconds_of([&] { (void)journal.value()->append(write_edit(*edit)); }));
                clock_gettime(CLOCK_MONOTONIC, &to);
                wall.push_back(static_cast<double>(to.tv_sec - from.tv_sec) +
                               static_cast<double>(to.tv_nsec - from.tv_nsec) * 1e-9);
            }
            const double found = median(wall);
            std::printf(
                "journal append of a %-8s %6.1f us (99th percentile %.1f), processor time %.1f us%s\n", kind,
                found * 1e6, percentile(wall, 0.99) * 1e6, median(processor) * 1e6,
                verdict(found <= most_append_seconds));
        }
    }
    std::filesystem::remove_all(folder);
}

double resident_bytes() {
    std::ifstream status("/proc/self/statm");
    double all = 0;
    double resident = 0;
    status >> all >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

// In a process of its own, whose memory nothing else has used before.
void measure_memory(std::size_t clips) {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child < 0) stop_with("no process could be started");
    if (child == 0) {
        malloc_trim(0);
        const double before = resident_bytes();
        const sxy_DATA_root timeline(long_timeline(20, clips / 20, 2));
        malloc_trim(0);
        const double used = resident_bytes() - before;
        std::printf("timeline of %zu clips with 2 qualifiers each: %.3f GB, %.0f bytes a clip%s\n",
                    timeline.clip_count(), used * 1e-9, used / static_cast<double>(clips),
                    clips == most_bytes_for_clips ? verdict(used <= most_bytes) : "");
        std::printf("  records: clip %zu, qualifier %zu, attribute %zu bytes, without what they point to\n",
                    sizeof(sxy_CLIP), sizeof(qual_ITEM), sizeof(clip_attribute_ITEM));
        std::fflush(stdout);
        _exit(all_met ? 0 : 1);
    }
    int status = 0;
    if (waitpid(child, &status, 0) != child || status != 0) all_met = false;
}

std::size_t number_of(const char* text) {
    const auto number = std::strtoull(text, nullptr, 10);
    if (number < 1000)
        stop_with("a number of clips, at least 1000, is wanted instead of \"" + std::string(text) + "\"");
    return number;
}

}  // namespace

int main(int count, char** arguments) {
    const bool is_short = take_short(count, arguments);
    std::size_t clips = is_short ? 20'000 : 100'000;
    std::size_t memory_clips = is_short ? 20'000 : most_bytes_for_clips;
    for (int n = 1; n < count; ++n) {
        const std::string name = arguments[n];
        if (name == "--clips" && n + 1 < count) {
            clips = number_of(arguments[++n]);
        } else if (name == "--memory-clips" && n + 1 < count) {
            memory_clips = number_of(arguments[++n]);
        } else {
            stop_with("usage: bench_timeline_edits [--short] [--clips N] [--memory-clips N]");
        }
    }
    measure_memory(memory_clips);
    for (const std::size_t size : {clips / 100, clips / 10, clips}) compare_edits(size, size == clips);
    bulk_insert(clips);
    build_root(clips);
    if (!is_short) {
        compare_edits(clips * 10, false);
        bulk_insert(clips * 10);
        build_root(clips * 10);
    }
    append_to_journal();
    return all_met || is_short ? 0 : 1;
}
