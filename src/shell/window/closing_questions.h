// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <vector>

#include "util/job_list.h"

namespace vistels {

class open_event;

// What a person is asked before a window closes; each returns when there is an answer. Main thread.

// Saves the event; when that fails, or presses are not on record, asks whether the window closes anyway.
bool agree_to_leave(QWidget& window, open_event& event);

// Whether the window closes although these jobs are not finished; without any it does.
bool agree_to_stop_jobs(QWidget& window, const std::vector<job_status>& unfinished);

}  // namespace vistels
