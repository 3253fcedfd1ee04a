// SPDX-License-Identifier: GPL-3.0-or-later
#include <array>

#include "logger/logger_Dict_funcs.h"
#include "util/uuid.h"

namespace vistels {

namespace {

constexpr std::array palette = {"#4C79DD", "#EA9900", "#C391FE", "#B03D05", "#5CF1AC", "#E3D543",
                                "#80509C", "#BEC2E5", "#81BD91", "#A68446", "#8F92B4", "#4F725E"};
enum palette_index : std::size_t {
    blue,
    amber,
    violet,
    rust,
    mint,
    yellow,
    plum,
    mist,
    sage,
    tan,
    slate,
    fern
};

constexpr double button_width = 100;
constexpr double clip_button_height = 56;
constexpr double other_button_height = 46;
constexpr double gap = 6;
constexpr double margin = 8;
constexpr std::size_t columns = 4;

markup_Button_Item made(const new_button& asked, const rectangle& place) {
    markup_Button_Item button;
    button.set_uuid(new_uuid());
    button.set_name(asked.name);
    button.set_category(asked.category);
    button.set_type(asked.type);
    button.set_secs_in(asked.secs_in);
    button.set_secs_out(asked.secs_out);
    button.set_allow_overlapping_clips(asked.type == button_type::clip);
    logger_item_display_info display;
    display.logger_rect = place;
    display.button_colour = display.mask_colour = button_palette_colour(asked.palette_index);
    if (asked.key && *asked.key) {
        button_key_binding binding;
        binding.chars_no_mod = binding.chars = asked.key;
        display.binding = binding;
        display.show_keys = true;
    }
    button.set_display(std::move(display));
    return button;
}

}  // namespace

colour button_palette_colour(std::size_t index) {
    return colour_from_hex(palette[index % palette.size()]);
}

std::vector<button_record> laid_out_buttons(const std::vector<new_button>& all) {
    std::vector<button_record> buttons;
    std::size_t column = 0;
    double top = margin;
    double height = 0;
    const new_button* before = nullptr;
    for (const auto& asked : all) {
        const bool new_group =
            before && (before->type != asked.type || (asked.type != button_type::clip &&
                                                      std::string_view(before->category) != asked.category));
        if (before && (column == columns || new_group)) {
            top += height + gap;
            column = 0;
        }
        height = asked.type == button_type::clip ? clip_button_height : other_button_height;
        const double left = margin + static_cast<double>(column) * (button_width + gap);
        buttons.emplace_back(made(asked, {left, top, button_width, height}));
        ++column;
        before = &asked;
    }
    return buttons;
}

// The spans are held down for as long as they last; the moments are tapped and get their length from the
// seconds before and after. Keys that the transport uses (J K L, I O, Space, arrows) are left free.
button_dict general_code_window() {
    using enum button_type;
    button_dict all;
    all.buttons = laid_out_buttons({
        {clip, "Attack", "Play", blue, "a", 2, 1},       {clip, "Defence", "Play", rust, "d", 2, 1},
        {clip, "Break", "Play", mint, "b", 2, 1},        {clip, "Set piece", "Play", violet, "s", 3, 2},
        {clip, "Chance", "Event", amber, "c", 6, 3},     {clip, "Goal", "Event", yellow, "g", 10, 5},
        {clip, "Turnover", "Event", sage, "t", 4, 3},    {clip, "Foul", "Event", slate, "f", 4, 3},
        {qualifier, "Left", "Zone", violet, "q"},        {qualifier, "Centre", "Zone", violet, "w"},
        {qualifier, "Right", "Zone", violet, "e"},       {qualifier, "Box", "Zone", violet, "r"},
        {qualifier, "Won", "Outcome", amber, "1"},       {qualifier, "Lost", "Outcome", amber, "2"},
        {qualifier, "On target", "Outcome", amber, "3"}, {qualifier, "Off target", "Outcome", amber, "4"},
        {qualifier, "Home", "Team", mist, "h"},          {qualifier, "Visitors", "Team", mist, "v"},
        {qualifier, "Good", "Rating", fern, "5"},        {qualifier, "Poor", "Rating", fern, "6"},
    });
    return all;
}

}  // namespace vistels
