// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "util/property_value.h"

namespace vistels {

// Red, green, blue and alpha from 0 to 1.
struct colour {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    bool operator==(const colour&) const = default;
};

// "1.0,0.0,0.25", each component rounded to `decimals` (halves away from zero) and printed in its shortest
// form with at least one decimal; alpha is appended only when it is not exactly 1.
std::string colour_text(const colour& value, int decimals);
// Three or four finite numbers joined by commas; nothing for any other text.
std::optional<colour> colour_from_text(std::string_view text);

// "#RRGGBB"
colour colour_from_hex(std::string_view text);

struct rectangle {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    bool operator==(const rectangle&) const = default;
};

// "x,y,width,height" in shortest decimals.
std::string rectangle_text(const rectangle& value);
// Any text that holds four numbers, an array of four, or a dictionary with "x", "y", "width" and "height".
std::optional<rectangle> rectangle_from(const property_value& value);

}  // namespace vistels
