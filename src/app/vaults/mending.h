// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "app/vaults/vault_scan.h"
#include "util/recovery.h"

namespace vistels {

// Puts in order what broken-off saves left in the folders that `tree` has seen, see recover_timeline_folder.
// Folders in which, or above which, another program has a timeline open for writing are passed over: what
// looks like a left copy there may be a save on its way. So is the folder `but` in the tree's own folder.
recovery mend_tree(const vault_tree& tree, const std::string& but = {});

// The same in the folders of the event in `folder`: its own, that of its code window, and those of its
// vistels, `local_vistels` ("Single Videos Local") included. Nothing while another program has it open.
recovery mend_event(const std::string& folder, const std::string& local_vistels);

}  // namespace vistels
