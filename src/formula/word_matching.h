// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

#include "formula/token_ITEM.h"

namespace vistels {

// Whether a value meets a pattern; an empty pattern meets nothing. Characters are compared as written: case,
// accents and spaces count. UTF-8; takes time linear in both texts. Any thread.
bool matches(std::string_view value, std::string_view pattern, wild_card mode);

}  // namespace vistels
