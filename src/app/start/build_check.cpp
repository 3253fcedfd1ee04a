// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/start/build_check.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <utility>

#include "app/start/start_failures.h"
#include "app/vaults/trash.h"
#include "util/clock.h"
#include "util/file_system.h"
#include "util/property_value.h"
#include "util/text_forms.h"

namespace vistels {

namespace {

constexpr const char* last_build_key = "last build";
constexpr const char* in_use_key = "build number of Vistels being used now";
constexpr const char* available_key = "build number available for download";
constexpr const char* last_checked_key = "last time checked";
constexpr const char* url_key = "latest build information url";

std::optional<double> finite_number(const property_dictionary& stored, const char* key) {
    const auto number = stored.number(key);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

// What every executable file of this program holds, with its own number behind.
constexpr std::string_view build_mark = "Vistels build number: ";
#define VISTELS_TEXT_OF(value) #value
#define VISTELS_NUMBER_TEXT(value) VISTELS_TEXT_OF(value)
[[gnu::used]] constexpr char own_build[] =
    "Vistels build number: " VISTELS_NUMBER_TEXT(VISTELS_BUILD_NUMBER) ";";

// At most five decimals, without zeros at the end.
std::string build_text(double build) {
    constexpr double largest_shown = 1e15;
    char text[64];
    std::snprintf(text, sizeof text, "%.5f",
                  std::isfinite(build) && std::abs(build) < largest_shown ? build : 0.0);
    std::string shown = text;
    shown.erase(shown.find_last_not_of('0') + 1);
    // The decimal sign is the locale's.
    if (!shown.empty() && (shown.back() == '.' || shown.back() == ',')) shown.pop_back();
    return shown;
}

}  // namespace

failure older_build(double running_build, double last_build) {
    if (!(running_build < last_build)) return {};
    return build_is_older(build_text(running_build), build_text(last_build));
}

failure check_build(const home_places& places, double running_build) {
    const auto last = finite_number(read_settings(places, last_build_file), last_build_key);
    if (last != running_build) {
        property_dictionary stored;
        stored.add(last_build_key, running_build);
        if (auto saved = write_settings(places, last_build_file, stored); !saved) return saved.error();
    }
    return last ? older_build(running_build, *last) : failure();
}

std::optional<double> build_number_in(const std::string& executable) {
    // Read in pieces that overlap by more than the mark with its number is long.
    constexpr std::size_t piece_bytes = std::size_t{1} << 20;
    constexpr std::size_t overlap = 64;
    std::ifstream file(executable, std::ios::binary);
    std::string piece;
    while (file) {
        const std::size_t kept = std::min(piece.size(), overlap);
        piece.erase(0, piece.size() - kept);
        piece.resize(kept + piece_bytes);
        file.read(piece.data() + kept, static_cast<std::streamsize>(piece_bytes));
        piece.resize(kept + static_cast<std::size_t>(file.gcount()));
        for (auto at = piece.find(build_mark); at != piece.npos; at = piece.find(build_mark, at + 1)) {
            const auto begin = at + build_mark.size();
            const auto end = piece.find(';', begin);
            if (end == piece.npos || end - begin > overlap) continue;
            const auto number = number_from_text(std::string_view(piece).substr(begin, end - begin));
            if (number && std::isfinite(*number)) return number;
        }
    }
    return std::nullopt;
}

// Once the file is replaced the system tells of the running one that it is deleted.
running_executable::running_executable() : running_("/proc/self/exe") {
    std::error_code fault;
    const auto path = std::filesystem::read_symlink(running_, fault);
    if (!fault) path_ = path.string();
}

running_executable::running_executable(std::string path, std::string running)
    : path_(std::move(path)), running_(std::move(running)) {}

bool running_executable::is_replaced() const {
    file_identity installed, running;
    auto& files = machine_files();
    if (path_.empty() || files.identity(path_, installed) != 0 || files.identity(running_, running) != 0) {
        return false;
    }
    return installed.device != running.device || installed.inode != running.inode;
}

failure check_for_newer_build(const home_places& places, double running_build,
                              const running_executable& executable) {
    const auto installed =
        executable.is_replaced() ? build_number_in(executable.path()) : std::optional(running_build);
    property_dictionary stored;
    stored.add(in_use_key, running_build);
    if (installed) stored.add(available_key, *installed);
    stored.add(last_checked_key, seconds_since_1970());
    stored.add(url_key, "file://" + percent_encoded(executable.path()));
    if (auto saved = write_settings(places, build_number_file, stored); !saved) return saved.error();
    if (!installed || !(*installed > running_build)) return {};
    return newer_build_is_installed(build_text(running_build), build_text(*installed));
}

}  // namespace vistels
