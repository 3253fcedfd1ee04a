// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/job_list.h"

namespace vistels {

// The jobs of a window: those that end with the event it shows, and those that may go on beside another one.
struct job_groups {
    job_group& of_event;
    job_group& of_window;
};

}  // namespace vistels
