// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "logger/markup_Button_Item.h"
#include "timeline/edits/timeline_edit.h"
#include "timeline/records/sxy_DATA_root.h"

namespace vistels {

// What a press of a renamer makes of the clips, as operations: each goes to the row with the button's name
// and category, and gets the button's colour, or of these what the button says that it changes. A row that is
// missing is made. Clips that grow, or are not there, are passed over; nothing to change is no operation.
std::vector<operation::any> plan_renaming(const sxy_DATA_root& timeline, const markup_Button_Item& button,
                                          const std::vector<std::string>& clips);

}  // namespace vistels
