// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "util/job.h"
#include "util/result.h"
#include "video/single_Vistel_CTR.h"

namespace vistels {

// What the names of overlays' files begin with.
inline constexpr const char* overlay_name_lead = "overlay ";

// Whether the file is a picture (PNG, JPEG) that can be read. Any thread.
result<void> check_picture(const std::string& path);

// Brings a picture file (PNG, JPEG) into the vistel's data folder and returns the overlay that shows it over
// the whole of the vistel, to be set on the main thread. The vistel is not changed. A file that is no picture
// is an error. On failure nothing is left behind. Any thread.
result<vistel_overlay> bring_overlay(const single_Vistel_CTR& vistel, const std::string& picture, job& work);

// The file of an inserted picture; empty when the vistel is none, or the file is missing.
std::string picture_path(const single_Vistel_CTR& vistel);

// The overlay's picture file, whether it is there or not; empty when the vistel has none. Reads no disk.
std::string overlay_file(const single_Vistel_CTR& vistel);
// The same; empty when the file is missing, too. To remove an overlay it
// is set to nothing; its file stays with the vistel's data, so that this can be taken back.
std::string overlay_path(const single_Vistel_CTR& vistel);

}  // namespace vistels
