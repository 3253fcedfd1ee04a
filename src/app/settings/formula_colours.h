// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <string_view>

#include "app/settings/places.h"
#include "app/settings/settings_file.h"
#include "util/colour_text.h"
#include "util/result.h"

namespace vistels {

inline constexpr settings_file formula_colours_file{"Formulas", "formula identifier colours.plist"};

// One code of words in formulas and the colours in which it is shown as long as nobody chose one. The eight
// differ enough in lightness to be told apart without seeing hues.
struct formula_code {
    const char* code;        // "RN" ... "STAR"
    const char* colour_key;  // "RN - row name"
    const char* older_key;   // the same as older versions misspelt it; null: they did not
    const char* meaning;     // "row name"
    const char* on_dark;     // "#RRGGBB"
    const char* on_light;
};
inline constexpr std::size_t formula_code_count = 8;
// In the order of the file.
const std::array<formula_code, formula_code_count>& formula_codes();

// The colours of the codes, each in the place of its code in formula_codes().
struct formula_identifier_colours {
    std::array<colour, formula_code_count> colours;

    // The colour of a word with this code; nothing for a code that is not known.
    const colour* of(std::string_view code) const;
    // True when this code has the default colour: it is shown in the one that suits the ground.
    bool is_default(std::string_view code) const;

    bool operator==(const formula_identifier_colours&) const = default;
};

// Those on dark grounds.
formula_identifier_colours default_formula_colours();

// The colours that are stored, and the default for each that is missing or no colour. When there is no file
// yet, one with the defaults is written, as far as that is possible.
formula_identifier_colours load_formula_colours(const home_places& places);
result<void> save_formula_colours(const home_places& places, const formula_identifier_colours& chosen);

}  // namespace vistels
