// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels {

// What becomes of the sound's pitch when a movie is played at another rate than 1: varispeed lets it rise and
// fall with the rate, time domain keeps it.
enum class pitch_algorithm { varispeed, time_domain };

}  // namespace vistels
