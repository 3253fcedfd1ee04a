// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

#include "app/settings/places.h"
#include "app/settings/settings_file.h"
#include "util/result.h"

namespace vistels {

inline constexpr settings_file last_build_file{"System", "last build used.plist"};
inline constexpr settings_file build_number_file{"System", "build number.plist"};

// By which the message of an older build is known where messages are kept apart.
inline constexpr const char* start_up_message_id = "start up message";

// build_is_older when the running build is older than the one used before. The numbers have at most five
// decimals.
failure older_build(double running_build, double last_build);

// Compares the running build with the one that ran last and writes it down as that, whichever is older. What
// there is to tell: build_is_older, or that it could not be written.
failure check_build(const home_places& places, double running_build);

// The build number that a file of this program carries; nothing in other files. Any thread.
std::optional<double> build_number_in(const std::string& executable);

// The file that the running program was started from, and whether another one stands there by now.
class running_executable {
  public:
    // Of this process. To be asked for before the file may be replaced: when the program starts.
    running_executable();
    // Of one that runs from `running`, which its name `path` led to. For tests.
    running_executable(std::string path, std::string running);
    const std::string& path() const { return path_; }  // empty: not known
    bool is_replaced() const;

  private:
    std::string path_;
    std::string running_;
};

// Looks which build is installed and writes "build number.plist": the build that runs, the one that is
// installed, when it was looked, and the file that tells its number. Nothing is asked of a network: a newer
// build is one that was installed in the place of the running one. What there is to tell:
// newer_build_is_installed, or that it could not be written. Any thread, one at a time.
failure check_for_newer_build(const home_places& places, double running_build,
                              const running_executable& executable);

}  // namespace vistels
