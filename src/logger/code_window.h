// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "logger/logger_Dict_funcs.h"
#include "logger/logger_settings.h"

namespace vistels {

// A whole code window as a value: what its folder holds but for the pictures of the buttons. Copying one
// costs a pointer a button; of two copies only the buttons that differ are compared field by field.
struct code_window {
    button_dict buttons;
    logger_settings settings;
    logger_offsets offsets;

    bool operator==(const code_window&) const = default;
};

// Any thread. Missing or damaged buttons are an error that names the file; of the other files a missing one
// gives the defaults, and so does a damaged one, which is told in `messages`, if there are any.
result<code_window> load_code_window(const std::string& logger_folder,
                                     std::vector<failure>* messages = nullptr);

// Any thread. Writes the files of what differs from `saved`, which is what the folder holds; without it all
// that say something. Damaged files that it replaces are kept and told in `met`, if there is any.
result<void> save_code_window(const code_window& window, const std::string& logger_folder,
                              const code_window* saved = nullptr, file_system& files = machine_files(),
                              std::vector<file_conflict>* met = nullptr);

}  // namespace vistels
