// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "util/job.h"
#include "util/result.h"

namespace vistels {

// Writes the movie `to`, of the kind that its ending names, from the coded pictures of `from`, without
// decoding them: the first is shown from times[0] on, the next from times[1] and so on, and when there are no
// more of them they are taken from the first on again. The last stays until `end`. All are seconds; times
// ascend from 0 and are below `end`. Every picture of `from` has to be a key frame, and there may be at most
// 1,000. Sound is left out. On failure or cancelled `to` is removed. Any thread.
result<void> show_coded_pictures(const std::string& from, const std::string& to,
                                 const std::vector<double>& times, double end, job& work);

}  // namespace vistels
