// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "formula/code_points.h"
#include "formula/formula_builder.h"

namespace vistels::testing {

// In a formula "^" stands for the caret.
inline edited_formula at_caret(const std::string& marked) {
    const std::size_t at = marked.find('^');
    return {marked.substr(0, at) + marked.substr(at + 1), count_code_points(marked.substr(0, at))};
}

inline std::string marked(const edited_formula& edited) {
    std::string text = edited.text;
    return text.insert(byte_of_code_point(text, edited.caret), "^");
}

}  // namespace vistels::testing
