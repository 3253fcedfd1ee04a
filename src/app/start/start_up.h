// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "app/settings/places.h"
#include "app/start/build_check.h"
#include "app/start/open_windows.h"
#include "app/start/run_record.h"
#include "app/vaults/vault_scan.h"
#include "util/result.h"

namespace vistels {

// What starting found and did.
struct start_up_report {
    std::vector<std::string> cleaned;    // paths of deleted stray files
    std::vector<std::string> recovered;  // paths of files put back whole
    std::vector<failure> messages;       // for the user
    std::vector<open_window> windows;    // to be opened again, front to back
    bool ended_well_before = true;       // the previous run was quit, not killed
    failure unclean_end;              // else this tells of it, with all that was put back; not in `messages`
    std::string folder_last_focus;    // of the item that had the focus last; empty: not known
    std::vector<vault_tree> trees;    // what was seen of the vaults, for the list of their items
    std::shared_ptr<run_record> run;  // to be kept for as long as the program runs
};

// The steps before the first window, in this order: state folder and home vault are made when missing; strays
// of broken-off writes are cleaned up; torn files in the state folder are mended, damaged ones kept aside;
// the home vault gets its identity; every known vault is looked through and its torn files are mended; the
// run and the build are noted and checked against the ones before. Doing it again changes nothing. A home
// vault or state folder that cannot be made is an error; anything else that goes wrong is a message. What
// another program has open is left alone. `build` is the running build's number, `running_seconds` how long
// this program has been running.
result<start_up_report> start_up(const home_places& places, double build, double running_seconds);

// Notes that the run ended as it should.
result<void> note_clean_quit(const start_up_report& report);

}  // namespace vistels
