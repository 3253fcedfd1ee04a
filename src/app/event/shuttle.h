// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels {

// The rate after another press of a shuttle key: first the normal rate in that direction (1 or -1), then at
// each press the next of 2, 4, 8, 16, 32 and 64, none of them beyond `fastest` (> 0). `rate` counts only
// while `playing`.
double next_shuttle_rate(double rate, bool playing, int direction, double fastest);

// The same for a key that plays slower and slower: half the normal rate first, then 0.25, then 0.1.
double next_slow_rate(double rate, bool playing, int direction, double fastest);

// Where playing goes on when it has come to `seconds` and a stretch is played again and again: the start of
// the stretch when its end is reached (its end, when playing backwards past its start), else `seconds`.
double looped(double seconds, double rate, double start, double end);

}  // namespace vistels
