// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>

#include "util/result.h"

namespace vistels {

// How many clips "chron data.plist" in the folder holds, without building them where the file has the shape
// in which this program writes it. The journal is not looked at. The message names the file. Any thread.
result<std::size_t> count_stored_clips(const std::string& folder);

}  // namespace vistels
