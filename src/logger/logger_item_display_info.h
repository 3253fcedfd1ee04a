// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include "logger/button_key_binding.h"
#include "util/colour_text.h"

namespace vistels {

// How a button is drawn and which key presses it. Part of its markup_Button_Item, whose lock guards it.
// Colours that are not set are the view's own.
struct logger_item_display_info {
    rectangle logger_rect;  // on the canvas, in logical pixels, y downwards
    double alpha = 1;
    std::optional<colour> button_colour;
    std::optional<colour> mask_colour;  // of what the button makes; none: the button's
    std::optional<colour> name_colour;
    std::optional<double> name_font_size;  // points; none: the view's own
    bool hide_name = false;
    bool fit_name = false;
    bool show_keys = false;  // the key binding is drawn
    bool clock_time = false;
    bool down_time = false;                     // the time since the button went down is drawn
    std::optional<button_key_binding> binding;  // none: no key presses it

    bool operator==(const logger_item_display_info&) const = default;
};

}  // namespace vistels
