// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "document/editable_document.h"
#include "util/file_system.h"
#include "util/property_value.h"
#include "util/result.h"

namespace vistels {

// The files beside the buttons of a code window: dictionaries of which every key is optional. Any thread.

// Empty when the file is missing, and when it is damaged, which is told in `messages`, if there are any, with
// its name and the reason.
property_dictionary read_code_window_file(const std::string& path, std::vector<failure>* messages);

// Replaces the file, whose folder is made when missing. A damaged one is kept beside it as "X conflict N"
// and told in `met`, if there is any.
result<void> save_code_window_file(const std::string& path, const property_dictionary& stored,
                                   file_system& files, std::vector<file_conflict>* met);

}  // namespace vistels
