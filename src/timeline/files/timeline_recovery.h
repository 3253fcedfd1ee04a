// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "util/recovery.h"

namespace vistels {

// recover_folder for a folder in which a timeline may lie. A copy of "chron data.plist" is put back only when
// its content is that which the header names as saved last or before, or one that the journal continues: any
// other one would bring an older state back. Where neither header nor journal tells, its age decides.
recovery recover_timeline_folder(const std::string& folder, file_system& files = machine_files());

}  // namespace vistels
