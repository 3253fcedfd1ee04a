// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace vistels::fuzz {

// An alpha that is nearly 1 is written as ",1.0" once, and not at all when that has been read. So all such
// ends are left out before two written forms are compared.
inline std::string without_full_alpha(const std::string& text, std::string_view after) {
    constexpr std::string_view alpha = ",1.0";
    std::string kept;
    for (std::size_t from = 0; from < text.size();) {
        const auto found = text.find(after, from);
        kept.append(text, from, found - from);
        if (found == std::string::npos) break;
        while (kept.ends_with(alpha)) kept.erase(kept.size() - alpha.size());
        kept += after;
        from = found + after.size();
    }
    return kept;
}

}  // namespace vistels::fuzz
