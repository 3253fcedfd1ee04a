// SPDX-License-Identifier: GPL-3.0-or-later
//
// Measures the start of the core with a full vault, up to the complete list of its items.
//   bench_start_up [--short] [--collections N] [--at FOLDER] [--cold]
// The vault is made in FOLDER (else the folder for temporary files) and removed again. The peer is a plain
// walk of the same tree: opendir, readdir and closedir, going down by d_type, nothing kept. Each figure is
// the median of several runs. With --cold the kernel's caches are dropped before each run of a second round,
// which takes the right to do so and slows down whatever else runs. Exits with 1 when a target is missed.

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "app/start/start_up.h"
#include "app/vaults/files_MASTER_LIST.h"
#include "app/vaults/home_vault.h"
#include "support/measure.h"
#include "util/file_system.h"
#include "util/plain_run_loop.h"
#include "util/property_list.h"
#include "util/uuid.h"

namespace {

using namespace vistels;
using bench::processor_seconds;
using bench::take_short;
namespace fs = std::filesystem;

constexpr double most_seconds = 1;
constexpr int warm_runs = 9;
constexpr int cold_runs = 3;
constexpr int vistels_a_collection = 4;
constexpr int clips_a_timeline = 200;

void stop_with(const std::string& message) {
    std::fprintf(stderr, "%s\n", message.c_str());
    std::exit(2);
}

void put(const std::string& path, const std::string& bytes) {
    int descriptor = -1;
    if (machine_files().open(path, O_WRONLY | O_CREAT | O_TRUNC, descriptor) != 0 ||
        write_whole(machine_files(), descriptor, bytes) != 0) {
        stop_with("\"" + path + "\" could not be written");
    }
    machine_files().close(descriptor);
}

// A timeline's file of a size as coding a game makes it.
std::string timeline_text() {
    property_array clips;
    for (int n = 0; n < clips_a_timeline; ++n) {
        property_dictionary clip;
        clip.add("uuid", new_uuid());
        clip.add("time_start", n * 10.0);
        clip.add("time_end", n * 10.0 + 5);
        clips.emplace_back(std::move(clip));
    }
    property_dictionary row;
    row.add("row_name", "Pass");
    row.add("uuid_row", new_uuid());
    row.add("clips", std::move(clips));
    property_dictionary stored;
    stored.add("data_version", 2);
    stored.add("rows", property_array{std::move(row)});
    return write_property_list(stored);
}

// As an event that was coded leaves it: collection, timeline, code window, four vistels.
void make_collections(const std::string& vault, int count) {
    const std::string timeline = timeline_text();
    const std::string small = write_property_list(property_dictionary());
    for (int n = 0; n < count; ++n) {
        const std::string folder = vault + "/Video Groups/Match " + std::to_string(n);
        fs::create_directories(folder + "/Logger");
        put(folder + "/chron data.plist", timeline);
        for (const char* name : {"video group.plist", "chron data header.plist", "chron data summary.plist",
                                 "chron save time.plist", "chron notes.plist", "Logger/logger.plist",
                                 "Logger/button dict.plist", "Logger/linked timeline uuid.plist"}) {
            put(folder + "/" + name, small);
        }
        for (int v = 0; v < vistels_a_collection; ++v) {
            const std::string vistel = vault + "/Single Videos/" + new_uuid();
            fs::create_directories(vistel);
            put(vistel + "/single video.plist", small);
            put(vistel + "/part 001.mp4", "");
        }
    }
}

std::size_t walk(const std::string& folder) {
    std::size_t names = 0;
    DIR* const entries = ::opendir(folder.c_str());
    if (!entries) return 0;
    while (const dirent* entry = ::readdir(entries)) {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0) continue;
        ++names;
        if (entry->d_type == DT_DIR) names += walk(folder + "/" + entry->d_name);
    }
    ::closedir(entries);
    return names;
}

struct figures {
    double wall = 0;
    double processor = 0;
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

bool drop_caches() {
    ::sync();
    const int descriptor = ::open("/proc/sys/vm/drop_caches", O_WRONLY | O_CLOEXEC);
    const bool dropped = descriptor >= 0 && ::write(descriptor, "3", 1) == 1;
    if (descriptor >= 0) ::close(descriptor);
    return dropped;
}

// `work` calls what it is given when that is done which is measured; the rest of it is not.
using measured_work = std::function<void(const std::function<void()>& done)>;

figures measure(int runs, bool cold, const measured_work& work) {
    std::vector<double> walls, processors;
    for (int run = 0; run < runs; ++run) {
        if (cold) drop_caches();
        const double processor = processor_seconds();
        const double begun = steady_clock().seconds();
        work([&] {
            walls.push_back(steady_clock().seconds() - begun);
            processors.push_back(processor_seconds() - processor);
        });
    }
    return {median(walls), median(processors)};
}

// From nothing to every item listed.
void start_core(const home_places& places, std::size_t items, const std::function<void()>& done) {
    auto report = start_up(places, 100, 0);
    if (!report) stop_with(report.message());
    plain_run_loop loop;
    files_MASTER_LIST::options how;
    how.known_trees = std::move(report.value().trees);
    files_MASTER_LIST list(places, loop, std::move(how));
    list.start();
    const auto is_complete = [&] { return list.files_Items_App_MASTER_FILE_LIST().size() == items; };
    if (!loop.run_until(is_complete, 60)) stop_with("the list did not become complete");
    done();
    if (const auto noted = note_clean_quit(report.value()); !noted) stop_with(noted.message());
}

bool print(const char* what, const figures& ours, const figures& peer, double most) {
    const bool is_met = ours.wall <= most && ours.processor <= most;
    std::printf("%-34s %8.1f ms wall %8.1f ms processor; peer %8.1f ms wall %8.1f ms; ratio %.2f%s\n", what,
                ours.wall * 1e3, ours.processor * 1e3, peer.wall * 1e3, peer.processor * 1e3,
                ours.wall / peer.wall, is_met ? "" : "  MISSED");
    return is_met;
}

bool run(const std::string& folder, int collections, bool cold) {
    const home_places places = find_home_places(folder);
    make_collections(places.home_vault, collections);
    const std::size_t items = 3 * static_cast<std::size_t>(collections);
    const measured_work peer = [&](const auto& done) {
        if (walk(places.home_vault) == 0) stop_with("the vault is empty");
        done();
    };
    const measured_work ours = [&](const auto& done) { start_core(places, items, done); };
    std::printf("%d collections, %zu files and folders, %zu items\n", collections, walk(places.home_vault),
                items);
    const measured_work steps_alone = [&](const auto& done) {
        const auto report = start_up(places, 100, 0);
        if (!report) stop_with(report.message());
        done();
        if (const auto noted = note_clean_quit(report.value()); !noted) stop_with(noted.message());
    };
    print("the start-up steps alone, warm", measure(warm_runs, false, steps_alone),
          measure(warm_runs, false, peer), most_seconds);
    bool good = print("start to the complete list, warm", measure(warm_runs, false, ours),
                      measure(warm_runs, false, peer), most_seconds);
    if (cold && drop_caches()) {
        good = print("start to the complete list, cold", measure(cold_runs, true, ours),
                     measure(cold_runs, true, peer), most_seconds) &&
               good;
    } else {
        std::printf("start to the complete list, cold: not measured\n");
    }
    vault_tree tree(places.home_vault);
    constexpr double settled_after = 60;
    (void)tree.look(seconds_since_1970() + settled_after);
    const measured_work again = [&](const auto& done) {
        (void)tree.look(seconds_since_1970() + settled_after);
        done();
    };
    print("looking again, nothing changed", measure(warm_runs, false, again), measure(warm_runs, false, peer),
          most_seconds);
    return good;
}

}  // namespace

int main(int count, char** values) {
    const bool is_short = take_short(count, values);
    int collections = is_short ? 50 : 2000;
    std::string at = fs::temp_directory_path().string();
    bool cold = false;
    for (int index = 1; index < count; ++index) {
        cold = cold || std::strcmp(values[index], "--cold") == 0;
    }
    for (int index = 1; index + 1 < count; ++index) {
        const std::string option = values[index];
        if (option == "--collections") collections = std::atoi(values[index + 1]);
        if (option == "--at") at = values[index + 1];
    }
    if (collections < 1) stop_with("--collections takes a number from 1");
    std::string folder = at + "/vistels-bench-XXXXXX";
    if (!::mkdtemp(folder.data())) stop_with("\"" + at + "\" cannot be written");
    const bool good = run(folder, collections, cold);
    fs::remove_all(folder);
    return good || is_short ? 0 : 1;
}
