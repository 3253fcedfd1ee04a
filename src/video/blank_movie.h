// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "util/job.h"
#include "util/result.h"

namespace vistels {

// Writes a movie of one still picture, black, that lasts `seconds`. It is written under a name that ends in
// " temp.mov" and appears at `path` when it is whole; on failure, or when `work` is cancelled, nothing is
// left. Any thread.
result<void> write_blank_movie(const std::string& path, double seconds, job& work);

}  // namespace vistels
