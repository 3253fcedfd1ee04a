// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

#include "util/property_value.h"
#include "util/result.h"
#include "util/stored_view.h"

namespace vistels {

// Reads a JSON document, as json_cursor says. `name` is the file's name, for the message. Any thread.
result<property_value> read_json(std::string_view bytes, const std::string& name);

// The same without a tree: the view lies in the bytes and the arena.
result<stored_view> read_json(std::string_view bytes, const std::string& name, stored_arena& arena);

enum class json_layout {
    pretty,    // two blanks a level, one entry a line, ending in a newline
    one_line,  // no blanks, no newline
};

// The value as JSON. A real number keeps a decimal point or exponent, so that it reads back as a real; one
// that is not finite is null. Data is base64 text, a date ISO 8601 text.
std::string write_json(const property_value& value, json_layout layout = json_layout::pretty);

}  // namespace vistels
