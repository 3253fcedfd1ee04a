// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/word_matching.h"

#include <string.h>

namespace vistels {

bool matches(std::string_view value, std::string_view pattern, wild_card mode) {
    if (pattern.empty() || value.size() < pattern.size()) return false;
    switch (mode) {
        case wild_card::MATCH_ALL:
            return value == pattern;
        case wild_card::MATCH_PREFIX:
            return value.starts_with(pattern);
        case wild_card::MATCH_SUFFIX:
            return value.ends_with(pattern);
        case wild_card::MATCH_ANYWHERE:
            // Unlike string_view::find it never takes quadratic time.
            return ::memmem(value.data(), value.size(), pattern.data(), pattern.size()) != nullptr;
    }
    return false;
}

}  // namespace vistels
