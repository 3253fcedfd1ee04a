// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/build_check.h"

#include <cmath>
#include <cstdio>

#include "app/run_record.h"
#include "util/property_value.h"

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

std::string build_message(double running_build, double last_build) {
    if (!(running_build < last_build)) return {};
    return "This version of Vistels is an older build than the previous version that was used.\r\r"
           "Build number of this version  " +
           build_text(running_build) + ".\rPrevious build number used  " + build_text(last_build) + ".";
}

result<std::string> check_build(const home_places& places, double running_build) {
    const auto last = finite_number(read_settings(places, last_build_file), last_build_key);
    if (last != running_build) {
        property_dictionary stored;
        stored.add(last_build_key, running_build);
        if (auto saved = write_settings(places, last_build_file, stored); !saved) return saved.error();
    }
    return last ? build_message(running_build, *last) : std::string();
}

build_number_state load_build_number(const home_places& places) {
    const auto stored = read_settings(places, build_number_file);
    return {finite_number(stored, in_use_key), finite_number(stored, available_key),
            stored_time(stored, last_checked_key), stored.text_or_empty(url_key)};
}

result<void> note_build_in_use(const home_places& places, double running_build) {
    if (load_build_number(places).in_use == running_build) return {};
    property_dictionary stored;
    stored.add(in_use_key, running_build);
    return write_settings(places, build_number_file, stored);
}

}  // namespace vistels
