// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "util/result.h"

namespace vistels {

// What the command line asks for.
struct application_options {
    std::vector<std::string> paths;  // vaults, collections' folders, movie files
    std::string home;                // empty: the user's own folders
    std::string screenshot;          // a picture file: show the event, write the window into it, end
    std::string theme;               // "dark", "light", or empty: as the desktop has it
    int width = 0;                   // of the windows in logical pixels; 0: as they were left
    int height = 0;
    std::string filter;      // for a screenshot: the filter that is on
    double at_seconds = -1;  // where the playhead goes for a screenshot; negative: where it was left
    bool show_help = false;
    bool show_version = false;
};

// Reads the arguments without the program's name. The message says what is wrong with them.
result<application_options> read_options(const std::vector<std::string>& arguments);

// What --help prints.
std::string help_text();

}  // namespace vistels
