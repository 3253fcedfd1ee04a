// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "timeline/files/sxy_Save_Load.h"
#include "timeline/records/sxy_DATA_root.h"
#include "util/result.h"

namespace vistels {

// The timeline as the application would show it: the file, and for a folder what its journal holds beyond it,
// clips that were growing being finished. Nothing is changed on disk.
result<loaded_timeline> read_source(const std::string& source);

}  // namespace vistels
