// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings/formula_colours.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "app/settings/state_log.h"

namespace vistels {

namespace {

std::optional<double> component(const property_dictionary& stored, const char* key) {
    const auto number = stored.number(key);
    if (!number || !std::isfinite(*number)) return std::nullopt;
    return std::clamp(*number, 0.0, 1.0);
}

std::optional<colour> read_colour(const property_dictionary& stored, const char* key) {
    const auto* parts = key ? stored.dictionary(key) : nullptr;
    if (!parts) return std::nullopt;
    const auto red = component(*parts, "red");
    const auto green = component(*parts, "green");
    const auto blue = component(*parts, "blue");
    if (!red || !green || !blue) return std::nullopt;
    return colour{*red, *green, *blue};
}

property_dictionary write_colour(const property_dictionary* before, const colour& chosen) {
    property_dictionary parts = before ? *before : property_dictionary();
    parts.set("red", chosen.red);
    parts.set("green", chosen.green);
    parts.set("blue", chosen.blue);
    return parts;
}

std::size_t place_of(std::string_view code) {
    const auto& all = formula_codes();
    return static_cast<std::size_t>(
        std::find_if(all.begin(), all.end(), [&](const formula_code& one) { return code == one.code; }) -
        all.begin());
}

// What the file keeps of a colour: 8-bit steps are not exact in decimals.
bool is_same(const colour& a, const colour& b) {
    constexpr double half_a_step = 0.5 / 255;
    return std::abs(a.red - b.red) < half_a_step && std::abs(a.green - b.green) < half_a_step &&
           std::abs(a.blue - b.blue) < half_a_step;
}

}  // namespace

const std::array<formula_code, formula_code_count>& formula_codes() {
    static constexpr std::array<formula_code, formula_code_count> all{{
        {"RN", "RN - row name", nullptr, "row name", "#83BDF5", "#2F5CC4"},
        {"RC", "RC - row category", nullptr, "row category", "#8F8FFF", "#00075A"},
        {"QN", "QN - qualifier name", "QN - qualifer name", "qualifier name", "#FFEC9D", "#6D5E00"},
        {"QC", "QC - qualifier category", "QC - qualifer category", "qualifier category", "#B6D431",
         "#04464D"},
        {"AN", "AN - attribute name", nullptr, "attribute name", "#E06BB6", "#A03A7C"},
        {"AC", "AC - attribute category", nullptr, "attribute category", "#F09DA2", "#8A1A0B"},
        {"NT", "NT - note", nullptr, "note", "#48FBF6", "#5D1A92"},
        {"STAR", "STAR - star", nullptr, "star", "#B0A518", "#39001F"},
    }};
    return all;
}

const colour* formula_identifier_colours::of(std::string_view code) const {
    const std::size_t place = place_of(code);
    return place < colours.size() ? &colours[place] : nullptr;
}

bool formula_identifier_colours::is_default(std::string_view code) const {
    const std::size_t place = place_of(code);
    return place < colours.size() && is_same(colours[place], colour_from_hex(formula_codes()[place].on_dark));
}

formula_identifier_colours default_formula_colours() {
    formula_identifier_colours defaults;
    for (std::size_t place = 0; place < formula_code_count; ++place) {
        defaults.colours[place] = colour_from_hex(formula_codes()[place].on_dark);
    }
    return defaults;
}

formula_identifier_colours load_formula_colours(const home_places& places) {
    formula_identifier_colours loaded = default_formula_colours();
    const auto stored = read_settings(places, formula_colours_file);
    if (stored.empty()) {
        if (const auto saved = save_formula_colours(places, loaded); !saved)
            log_line(places, saved.message());
        return loaded;
    }
    for (std::size_t place = 0; place < formula_code_count; ++place) {
        const auto& code = formula_codes()[place];
        auto chosen = read_colour(stored, code.colour_key);
        if (!chosen) chosen = read_colour(stored, code.older_key);
        if (chosen) loaded.colours[place] = *chosen;
    }
    return loaded;
}

result<void> save_formula_colours(const home_places& places, const formula_identifier_colours& chosen) {
    const auto stored = read_settings(places, formula_colours_file);
    property_dictionary values;
    for (std::size_t place = 0; place < formula_code_count; ++place) {
        const char* key = formula_codes()[place].colour_key;
        values.add(key, write_colour(stored.dictionary(key), chosen.colours[place]));
    }
    return write_settings(places, formula_colours_file, values);
}

}  // namespace vistels
