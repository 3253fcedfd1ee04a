// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "util/json.h"

namespace vistels::testing {

// The dictionary that is written so; an empty one, and a failure of the test, when it cannot be read.
inline property_dictionary json(const std::string& text) {
    const auto read = read_json(text, "case");
    EXPECT_TRUE(read) << text << read.message();
    return read ? *read.value().dictionary() : property_dictionary();
}

inline std::string one_line(const property_dictionary& value) {
    return write_json(value, json_layout::one_line);
}

}  // namespace vistels::testing
