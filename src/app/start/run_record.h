// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "app/settings/places.h"
#include "app/settings/settings_file.h"
#include "util/property_value.h"
#include "util/result.h"

namespace vistels {

inline constexpr settings_file correctly_terminated_file{"", "correctly terminated.plist"};
inline constexpr const char* last_focus_key = "uuid last focus 2";

// The record of this run in "correctly terminated.plist". Of several programs that run with one state folder
// the first one keeps it; the others leave it alone. Main thread.
class run_record {
  public:
    // Takes part in the runs with this state folder, which must exist.
    explicit run_record(const home_places& places);
    ~run_record();
    run_record(const run_record&) = delete;
    run_record& operator=(const run_record&) = delete;

    // No other program runs with the state folder.
    bool is_alone() const { return lock_ >= 0; }

    // What the record says of the run before this one. One that was begun and never ended was killed, or the
    // machine went down.
    struct last_run {
        bool ended_well = true;
        std::optional<double> loaded_at;  // seconds since 1970
        std::string uuid_last_focus;      // of the item that had the focus
    };
    // Notes that this run has begun and tells of the one before.
    last_run begin(result<void>& written);
    // Notes that it ended as it should.
    result<void> end();

  private:
    const home_places places_;
    int lock_ = -1;
};

// A time that is stored as a number of seconds since 1970, or as a date.
std::optional<double> stored_time(const property_dictionary& stored, const char* key);

}  // namespace vistels
