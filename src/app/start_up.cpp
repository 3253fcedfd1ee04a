// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/start_up.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <optional>

#include "app/vaults.h"
#include "timeline/writer_lock.h"
#include "util/clock.h"
#include "util/file_system.h"
#include "util/property_list.h"
#include "util/safe_write.h"
#include "util/uuid.h"

namespace vistels {

namespace {

constexpr int deepest_folder = 64;

std::string state_path(const home_places& places, const char* folder, const char* file) {
    return path_join(*folder ? path_join(places.state_folder, folder) : places.state_folder, file);
}
std::string windows_path(const home_places& places) {
    return state_path(places, "Windows", "windows open.plist");
}
std::string run_path(const home_places& places) {
    return state_path(places, "", "correctly terminated.plist");
}
std::string last_build_path(const home_places& places) {
    return state_path(places, "System", "last build used.plist");
}

result<void> write_state(const std::string& path, const property_dictionary& stored) {
    if (auto made = make_folders(path_folder(path)); !made) return made;
    return safe_write(path, stored);
}

// Tells what goes wrong without ending the start.
void tell(start_up_report& report, const result<void>& done) {
    if (!done) report.messages.push_back(done.message());
}

result<void> make_places(const home_places& places) {
    for (const auto& folder : {places.home_vault, places.state_folder}) {
        if (auto made = make_folders(folder); !made) return made;
    }
    for (const char* folder : {"Windows", "System", "Inspector", "Vault preferences"}) {
        if (auto made = make_folders(path_join(places.state_folder, folder)); !made) return made;
    }
    return {};
}

result<void> identify_home_vault(const home_places& places) {
    if (is_home_vault(places.home_vault)) return {};
    property_dictionary stored;
    stored.add("ID for this file:", new_uuid());
    stored.add("home vault creation date:", property_date{seconds_since_1970()});
    return safe_write(path_join(places.home_vault, "home vault information.plist"), stored);
}

bool holds_copies(const std::vector<std::string>& names) {
    return std::any_of(names.begin(), names.end(), [](const std::string& name) {
        return name.find(temporary_mark) != std::string::npos ||
               name.find(previous_mark) != std::string::npos;
    });
}

// Another program has the timeline there open; its copies are its own.
bool is_being_written(const std::string& folder, const std::vector<std::string>& names) {
    const bool has_writer = std::any_of(names.begin(), names.end(), [](const std::string& name) {
        return name.starts_with("chron data writer");
    });
    return has_writer && !writer_lock::take(folder);
}

void mend_folders(const std::string& folder, int depth, start_up_report& report) {
    const auto names = names_in_folder(folder);
    if (holds_copies(names) && !is_being_written(folder, names)) {
        auto mended = recover_folder(folder);
        std::move(mended.recovered.begin(), mended.recovered.end(), std::back_inserter(report.recovered));
        std::move(mended.messages.begin(), mended.messages.end(), std::back_inserter(report.messages));
    }
    if (depth >= deepest_folder) return;
    for (const auto& name : names) {
        const std::string path = path_join(folder, name);
        std::error_code ignored;
        if (!is_folder(path) || std::filesystem::is_symlink(path, ignored)) continue;
        mend_folders(path, depth + 1, report);
    }
}

// "last build" keeps the number of the build that ran last, whichever is older.
void check_build(const home_places& places, double build, start_up_report& report) {
    const std::string path = last_build_path(places);
    auto stored = read_dictionary_or_empty(path);
    if (const auto last = stored.number("last build")) {
        const auto message = build_message(build, *last);
        if (!message.empty()) report.messages.push_back(message);
    }
    stored.set("last build", build);
    tell(report, write_state(path, stored));
}

// A time as a number of seconds or as a date.
std::optional<double> stored_time(const property_dictionary& stored, const char* key) {
    if (const auto* value = stored.find(key)) {
        if (value->date()) return value->date()->seconds;
        return value->number();
    }
    return std::nullopt;
}

void note_run(const home_places& places, start_up_report& report) {
    auto stored = read_dictionary_or_empty(run_path(places));
    const auto loaded = stored_time(stored, "loaded at");
    const auto ended = stored_time(stored, "terminated correctly at");
    report.ended_well_before = !loaded || (ended && *ended >= *loaded);
    stored.set("loaded at", seconds_since_1970());
    tell(report, write_state(run_path(places), stored));
}

// At most five decimals, without zeros at the end.
std::string build_text(double build) {
    char text[64];
    std::snprintf(text, sizeof text, "%.5f", std::isfinite(build) && std::abs(build) < 1e15 ? build : 0.0);
    std::string shown = text;
    shown.erase(shown.find_last_not_of('0') + 1);
    if (shown.ends_with('.')) shown.pop_back();
    return shown;
}

}  // namespace

result<start_up_report> start_up(const home_places& places, double build, double running_seconds) {
    if (auto made = make_places(places); !made) return made.error();
    start_up_report report;
    report.cleaned = clean_up_strays(path_join(places.state_folder, "Inspector"), running_seconds);
    mend_folders(places.state_folder, 0, report);
    for (const auto& vault : known_vaults(places)) mend_folders(vault, 0, report);
    tell(report, identify_home_vault(places));
    check_build(places, build, report);
    note_run(places, report);
    report.windows = load_open_windows(places);
    return report;
}

result<void> note_clean_quit(const home_places& places, const std::string& uuid_last_focus) {
    auto stored = read_dictionary_or_empty(run_path(places));
    stored.set("terminated correctly at", seconds_since_1970());
    if (!uuid_last_focus.empty()) stored.set("uuid last focus 2", uuid_last_focus);
    return write_state(run_path(places), stored);
}

std::vector<open_window> load_open_windows(const home_places& places) {
    std::vector<open_window> windows;
    const auto stored = read_dictionary_or_empty(windows_path(places));
    if (const auto* all = stored.array("open windows")) {
        for (const auto& value : *all) {
            const auto* window = value.dictionary();
            if (!window) continue;
            windows.push_back({window->text_or_empty("root ID"), window->text_or_empty("name"),
                               window->integer("order").value_or(0),
                               window->text_or_empty("open_from_path")});
        }
    }
    std::stable_sort(windows.begin(), windows.end(),
                     [](const auto& a, const auto& b) { return a.order < b.order; });
    return windows;
}

result<void> save_open_windows(const home_places& places, const std::vector<open_window>& windows) {
    property_array all;
    property_array order;
    for (const auto& window : windows) {
        property_dictionary stored;
        stored.add("root ID", window.root_id);
        if (!window.name.empty()) stored.add("name", window.name);
        stored.add("order", window.order);
        stored.add("open_from_path", window.open_from_path);
        all.emplace_back(std::move(stored));
        order.emplace_back(window.root_id);
    }
    property_dictionary stored;
    stored.add("open windows", std::move(all));
    stored.add("window_order_on_save", std::move(order));
    return write_state(windows_path(places), stored);
}

std::string build_message(double running_build, double last_build) {
    if (!(running_build < last_build)) return {};
    return "This version of Vistels is an older build than the previous version that was used.\r\r"
           "Build number of this version  " +
           build_text(running_build) + ".\rPrevious build number used  " + build_text(last_build) + ".";
}

}  // namespace vistels
