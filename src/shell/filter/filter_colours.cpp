// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/filter/filter_colours.h"

#include <algorithm>
#include <optional>

#include "app/settings/formula_colours.h"
#include "shell/kit/theme.h"

namespace vistels {

namespace {

// Moving the letters moves their ground after them, by less each time.
constexpr int moves = 4;

std::optional<std::size_t> place_of(const std::string& code) {
    const auto& all = formula_codes();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const formula_code& one) { return code == one.code; });
    if (found == all.end()) return {};
    return static_cast<std::size_t>(found - all.begin());
}

}  // namespace

filter_colours::filter_colours(const formula_identifier_colours& stored) {
    for (const formula_code& one : formula_codes()) {
        if (!stored.is_default(one.code)) own_[one.code] = to_qt(*stored.of(one.code));
    }
}

QColor filter_colours::ink(const theme& look, const std::string& code) const {
    const auto known = place_of(code);
    if (!known) return look.text;
    const auto own = own_.find(code);
    QColor ink = own != own_.end() ? own->second : look.token_colours[*known];
    for (int i = 0; i < moves; ++i) ink = legible_on(ink, mix(ink, look.field, look.token_ground_share));
    return ink;
}

QColor filter_colours::ground(const theme& look, const std::string& code) const {
    if (!place_of(code)) return {};
    return mix(ink(look, code), look.field, look.token_ground_share);
}

}  // namespace vistels
