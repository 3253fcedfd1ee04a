// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "logger/code_window_files.h"
#include "logger/markup_Button_Item.h"
#include "util/colour_text.h"
#include "util/file_system.h"
#include "util/property_value.h"
#include "util/result.h"

namespace vistels {

// All of these are pure functions of their arguments and of the files they name: any thread.

inline constexpr const char* logger_folder_name = "Logger";
inline constexpr const char* button_file_name = "button dict.plist";
inline constexpr const char* logger_file_name = "logger.plist";

// What "button dict.plist" holds. Copying it costs a pointer a button.
struct button_dict {
    // An element of the file's list that is no button, and where in the list it stands.
    struct other_element {
        std::size_t index = 0;
        property_value value;
        bool operator==(const other_element&) const = default;
    };

    std::int64_t version_markup = 1;
    std::vector<button_record> buttons;  // in canvas order, the last drawn on top
    std::vector<other_element> others;   // by index
    // The document as read, without the list; what stands in its place and is none stays until there are
    // buttons.
    property_dictionary kept;

    bool operator==(const button_dict&) const = default;
};

// The folder of the code window that belongs to `folder`: `folder` itself when it holds the buttons, else
// "Logger" below it.
std::string logger_folder_of(const std::string& folder);
bool has_button_dict(const std::string& logger_folder);

// The buttons as they stand in a document. Elements that are no dictionaries are kept in their places; of two
// buttons with one UUID the later gets another for this run.
button_dict read_button_dict(const property_dictionary& document);
property_dictionary write_button_dict(const button_dict& all);

// A missing or damaged file is an error that names it.
result<button_dict> load_button_dict(const std::string& logger_folder);
// Writes "button dict.plist" and the count in "logger.plist", see save_code_window_file; the folder is made
// when missing.
result<void> save_button_dict(const button_dict& all, const std::string& logger_folder,
                              file_system& files = machine_files(),
                              std::vector<file_conflict>* met = nullptr);

// Where the button's picture lies; empty when it has none, or one whose identifier is no name for a file.
std::string button_picture_path(const markup_Button_Item& button, const std::string& logger_folder);

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
std::vector<button_record> laid_out_buttons(const std::vector<new_button>& all);

}  // namespace vistels
