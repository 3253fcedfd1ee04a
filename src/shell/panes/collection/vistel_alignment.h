// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace vistels {

// How vistels are brought into step by hand. Offsets are seconds. Any thread.

// The frames by which a drag of so many pixels shifts a movie: to the right a later frame is shown.
int dragged_frames(double pixels, int pixels_per_frame);
// The offset after a movie was shifted by so many frames: what starts later has the larger offset, so showing
// a later frame takes from it.
double shifted_offset(double offset, int frames, double frame_seconds);

// "+3 frames", "-1 frame", with the seconds below.
QString shift_words(int frames, double frame_seconds);

}  // namespace vistels
