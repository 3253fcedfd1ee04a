// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>
#include <vector>

#include "demo/geometry.h"

namespace vistels::demo {

// Letters made of lines, the same on every machine whatever fonts it has: A to Z, 0 to 9, ":", "." and "-".
// Anything else is a blank. Baseline at y 0, y upwards, `height` high, beginning at x 0.
using strokes = std::vector<std::vector<point>>;
strokes text_strokes(std::string_view text, double height);

// How far a text reaches; digits all take the same width.
double text_width(std::string_view text, double height);

}  // namespace vistels::demo
