// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "logger/button_fired.h"
#include "logger/press_script.h"
#include "logger/press_settings.h"
#include "timeline/records/sxy_DATA_root.h"
#include "util/result.h"

namespace vistels {

// Presses to be tried out: the buttons, the timeline they are for as it is now, and what is pressed when.
struct dry_run {
    timeline_snapshot timeline;
    std::vector<button_record> buttons;
    press_settings settings;
    double earliest_seconds = 0;  // see press_engine::set_earliest_time
    std::vector<press_step> steps;
};

using dry_run_outcome = result<std::vector<button_fired>>;

// What they would set off, in firing order, with what is still down at the end released then. They are made
// on a copy of the timeline, in a folder of its own below `folder`, which is gone afterwards: nothing is
// saved. Takes as long as writing and loading the timeline. Any thread.
dry_run_outcome run_dry(const dry_run& wanted, const std::string& folder);

}  // namespace vistels
