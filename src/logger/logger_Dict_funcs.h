// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "logger/markup_Button_Item.h"
#include "util/colour_text.h"
#include "util/file_system.h"
#include "util/property_value.h"
#include "util/result.h"

namespace vistels {

inline constexpr const char* logger_folder_name = "Logger";
inline constexpr const char* button_file_name = "button dict.plist";
inline constexpr const char* logger_file_name = "logger.plist";
inline constexpr const char* logger_info_file_name = "logger info.plist";

// What "button dict.plist" holds.
struct button_dict {
    std::int64_t version_markup = 1;
    std::vector<markup_Button_Item> buttons;  // in canvas order, the last drawn on top
    property_dictionary kept;                 // the document as read, without the buttons
};

// What "logger info.plist" holds: the settings of one code window.
struct logger_settings {
    std::string linked_timeline_uuid;  // the timeline that it writes into; empty: its collection's
    double scroller_offset_x = 0;      // canvas scroll position in logical pixels
    double scroller_offset_y = 0;
    std::optional<colour> background_colour;
    bool remember_markup_mode = false;
    property_dictionary kept;  // all keys as read; those above are replaced when they have changed
};

// The folder of the code window that belongs to `folder`: `folder` itself when it holds the buttons, else
// "Logger" below it.
std::string logger_folder_of(const std::string& folder);
bool has_button_dict(const std::string& logger_folder);

// The buttons as they stand in a document. Elements that are no dictionaries are passed over; of two buttons
// with one UUID the later gets another for this run.
button_dict read_button_dict(const property_dictionary& document);
property_dictionary write_button_dict(const button_dict& all);

// A missing or damaged file is an error that names it.
result<button_dict> load_button_dict(const std::string& logger_folder);
// Writes "button dict.plist" and the count in "logger.plist"; the folder is made when missing.
result<void> save_button_dict(const button_dict& all, const std::string& logger_folder,
                              file_system& files = machine_files());

// A missing or unreadable file gives the defaults.
logger_settings load_logger_settings(const std::string& logger_folder);
result<void> save_logger_settings(const logger_settings& settings, const std::string& logger_folder,
                                  file_system& files = machine_files());

// A code window for any game: what a collection without one of its own gets. The UUIDs are new.
button_dict general_code_window();

// The colours given to rows and buttons, in the order in which they are given out.
colour button_palette_colour(std::size_t index);
// A button of a new code window, placed in a grid of four columns from the upper left: `column` from 0, and
// how far down in logical pixels.
struct new_button {
    button_type type;
    const char* name;
    const char* category;
    std::size_t palette_index;
    const char* key;  // one character, or empty for none
    double secs_in = 0;
    double secs_out = 0;
};
// Lays the buttons out in rows of four, clip buttons 100x56 and others 100x46, each change of type or
// category in a new line.
std::vector<markup_Button_Item> laid_out_buttons(const std::vector<new_button>& all);

}  // namespace vistels
