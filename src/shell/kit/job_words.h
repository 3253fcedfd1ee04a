// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include "util/job_list.h"

namespace vistels {

// What is said of jobs. Main thread.

QString job_title(const job_status& status);
// How far it is: "Waiting", "Stopping", "0:48 left", "64 %"; empty while nothing is known.
QString job_fact(const job_status& status);
// "64 %".
QString job_percent(double progress);

}  // namespace vistels
