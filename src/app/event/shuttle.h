// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels {

// The rate after another press of a shuttle key: first the normal rate in that direction (1 or -1), then
// twice the rate at each press, up to `fastest` (> 0). `rate` counts only while `playing`.
double next_shuttle_rate(double rate, bool playing, int direction, double fastest);

// Where playing goes on when it has come to `seconds` and a stretch is played again and again: the start of
// the stretch when its end is reached (its end, when playing backwards past its start), else `seconds`.
double looped(double seconds, double rate, double start, double end);

}  // namespace vistels
