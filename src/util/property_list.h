// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

#include "util/property_value.h"
#include "util/result.h"
#include "util/stored_view.h"

namespace vistels {

// Nesting deeper than this is refused by the readers of property lists and of JSON.
inline constexpr int deepest_nesting = 128;

// What a property list that this program writes begins and ends with, around its value.
inline constexpr std::string_view property_list_head =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n";
inline constexpr std::string_view property_list_foot = "</plist>\n";

// Reads an XML property list. Strict about the file: it must be well formed UTF-8 and a property list,
// without declarations of its own; values have no attributes. A number or date that cannot be read as one
// becomes a null. Keys keep their order. `name` is the file's name, for the message. Any thread.
result<property_value> read_property_list(std::string_view bytes, const std::string& name);

// The same without a tree: the view lies in the arena alone.
result<stored_view> read_property_list(std::string_view bytes, const std::string& name, stored_arena& arena);

// The file's property list, as above.
result<property_value> read_property_list_file(const std::string& path);

// The dictionary that the file holds; an empty one when the file is missing, unreadable or holds something
// else. For records whose every key is optional.
property_dictionary read_dictionary_or_empty(const std::string& path);

// The value as an XML property list, version 1.0. Real numbers are in their shortest form that reads back the
// same; characters that XML cannot hold, and bytes that are not UTF-8, become U+FFFD; nulls are left out.
std::string write_property_list(const property_value& value);

}  // namespace vistels
