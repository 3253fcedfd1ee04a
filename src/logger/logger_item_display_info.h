// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

#include "logger/button_key_binding.h"
#include "timeline/form/point.h"
#include "util/colour_text.h"

namespace vistels {

// How a button is drawn and which key presses it. Part of its markup_Button_Item, whose lock guards it.
// Colours, fonts and sizes that are not set are the view's own.
struct logger_item_display_info {
    rectangle logger_rect;  // on the canvas, in logical pixels, y downwards
    double alpha = 1;
    std::optional<colour> button_colour;
    std::optional<colour> mask_colour;            // of what the button makes; none: the button's
    bool linked_mask_and_button_colours = false;  // a new colour of one is that of both
    std::string button_shape;                     // "Plain Pentagon 1"; empty: a rectangle
    bool real_picture = false;                    // its picture is a photograph, not a drawn shape
    bool hide_down_state = false;
    bool show_pinger = false;  // a ring at each press

    std::optional<colour> name_colour;
    std::string name_font;
    std::optional<double> name_font_size;  // pixels of the canvas
    bool hide_name = false;
    bool fit_name = false;
    bool show_keys = false;  // the key binding is drawn
    bool clock_time = false;
    bool down_time = false;  // the time since the button went down is drawn

    std::string formula_output_font;
    std::optional<double> formula_output_font_size;  // pixels of the canvas
    colour formula_output_colour{1, 1, 1, 1};

    // How far what is written on the button is moved from its usual place, in logical pixels.
    point name_offset;
    point keys_offset;
    point filter_output_offset;
    point multi_formula_output_offset;
    // Where on the canvas the button was clicked first.
    std::optional<double> start_click_x;
    std::optional<double> start_click_y;

    std::optional<button_key_binding> binding;  // none: no key presses it

    bool operator==(const logger_item_display_info&) const = default;
};

}  // namespace vistels
