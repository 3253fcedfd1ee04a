// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "util/job.h"
#include "util/result.h"
#include "video/video_coll_Files.h"

namespace vistels {

// A clone of a vistel with its data: the same movie parts with their gaps, offset, picture and overlay, under
// a UUID of its own and without a number yet. Parts whose file is missing stay without one. `source`, which
// must not be changed meanwhile (it may be a copy), is not changed. On failure or cancelling nothing is left
// behind. Any thread.
result<std::shared_ptr<single_Vistel_CTR>> duplicate_vistel(const single_Vistel_CTR& source,
                                                            const new_vistels& made_with, job& work);

// Copies the vistel's movie into a folder (the desktop), named after the vistel; of several parts each, with
// its number behind the name. Names that are taken get a further number. Returns the paths. The copies are
// files of their own. On failure or cancelling none is left behind. Any thread.
result<std::vector<std::string>> copy_vistel_movie(const single_Vistel_CTR& vistel, const std::string& folder,
                                                   job& work);

// The movie parts of the vistel with deinterlaced movies in the place of its own: one picture for each field,
// durations and gaps as they were. The new files lie beside the old ones, whole. Neither the vistel nor its
// files are changed; once the parts are set and saved, the old files are listed as unused, and setting the
// old parts takes it all back. A part whose file is missing is an error. On failure or cancelling nothing is
// left behind. Any thread.
result<std::vector<movie_Part_DRONE_Offset_Item>> deinterlaced_parts(const single_Vistel_CTR& vistel,
                                                                     job& work);

}  // namespace vistels
