// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

#include "app/places.h"
#include "app/settings_file.h"
#include "util/result.h"

namespace vistels {

inline constexpr settings_file last_build_file{"System", "last build used.plist"};
inline constexpr settings_file build_number_file{"", "build number.plist"};

// The message for a running build that is older than the one used before; empty when it is not. The numbers
// have at most five decimals.
std::string build_message(double running_build, double last_build);

// Compares the running build with the one that ran last and writes it down as that, whichever is older. The
// message, or the empty text.
result<std::string> check_build(const home_places& places, double running_build);

// "build number.plist": what is known of newer builds.
struct build_number_state {
    std::optional<double> in_use;        // the build that ran last
    std::optional<double> available;     // for download
    std::optional<double> last_checked;  // seconds since 1970
    std::string latest_information_url;  // where a newer build is announced; empty: nowhere
};
build_number_state load_build_number(const home_places& places);
// Writes the running build's number beside what is known; a file that names it already is left alone.
result<void> note_build_in_use(const home_places& places, double running_build);

}  // namespace vistels
