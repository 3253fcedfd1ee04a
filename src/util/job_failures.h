// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

// The outcome of a job that was cancelled.
inline constexpr failure_of<> job_was_cancelled{"job was cancelled", "It was cancelled."};

}  // namespace vistels
