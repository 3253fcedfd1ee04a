// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

#include "util/property_value.h"
#include "util/result.h"

namespace vistels {

// Nesting deeper than this is refused by the readers of property lists and of JSON.
inline constexpr int deepest_nesting = 128;

// Reads an XML property list. Strict about the file: it must be well formed UTF-8 and a property list,
// without entity declarations. A number or date that cannot be read as one becomes a null. Keys keep their
// order. `name` is the file's name, for the message. Any thread.
result<property_value> read_property_list(std::string_view bytes, const std::string& name);

// The file's property list, as above.
result<property_value> read_property_list_file(const std::string& path);

// The dictionary that the file holds; an empty one when the file is missing, unreadable or holds something
// else. For records whose every key is optional.
property_dictionary read_dictionary_or_empty(const std::string& path);

// The value as an XML property list, version 1.0. Real numbers are in their shortest form that reads back the
// same; characters that XML cannot hold, and bytes that are not UTF-8, become U+FFFD; nulls are left out.
std::string write_property_list(const property_value& value);

}  // namespace vistels
