// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "app/settings/places.h"
#include "app/start/open_windows.h"
#include "app/vaults/vault_scan.h"
#include "util/result.h"

namespace vistels {

// Keeps the UUID of the item that has the focus for the next start. Any thread, but not beside another write
// of "correctly terminated.plist".
result<void> note_focus(const home_places& places, const std::string& uuid);

// The folder of the item that had the focus when it was noted last: one of those that `windows` list, or when
// none is listed one in `vaults`. Empty when it is not found. Reads the records of the items until then.
std::string folder_of_last_focus(const std::string& uuid, const std::vector<open_window>& windows,
                                 const std::vector<vault_tree>& vaults);

}  // namespace vistels
