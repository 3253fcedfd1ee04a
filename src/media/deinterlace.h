// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "util/job.h"
#include "util/result.h"

namespace vistels {

// Writes the movie `from` anew without interlacing: one whole picture for each field (FFmpeg's bwdif; fields
// that are not marked count as upper first), H.264, at the times of the fields, so that the movie is as long
// as before. Sound is copied as it is. `container` is a name whose ending says which kind of file is written
// ("x.mp4"); `to`, where nothing must be, may have any name. On failure or cancelling `to` is removed. Any
// thread.
result<void> deinterlace_movie(const std::string& from, const std::string& to, const std::string& container,
                               job& work);

}  // namespace vistels
