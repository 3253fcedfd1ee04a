// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

#include "util/job.h"
#include "util/result.h"

namespace vistels {

struct demo_options {
    int cameras = 4;   // 1 to 16
    int seconds = 60;  // of each camera's movies, 2 to 7200
    std::uint64_t seed = 240;
    std::string vault_name = "Demo Vault";  // used by make_demo_event alone
};

// Folders, all as full paths where the parent was one.
struct demo_paths {
    std::string vault;
    std::string collection;
    std::string timeline;
    std::string logger;
};

// Makes an example event in a vault: the collection "Harbour – Northgate" of one generated game filmed by
// `cameras` cameras, its coded timeline and its code window. The movies are as long as each other, the
// cameras started at different moments, and one of them wrote two movies with a gap between. Everything is
// made in a hidden folder beside and put in place at the end; on failure, or when `work` is cancelled,
// nothing is left behind; what a program that died meanwhile has left goes with the next call. Two
// processors take half as long as a camera's movies last. Progress is told on other threads too. Any thread.
result<demo_paths> make_demo_collection(const std::string& vault_folder, const demo_options& options,
                                        job& work);

// Makes the vault "NAME.VVault" in `parent_folder` with that collection in it. One that exists is an error.
result<demo_paths> make_demo_event(const std::string& parent_folder, const demo_options& options, job& work);

}  // namespace vistels
