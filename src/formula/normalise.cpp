// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/normalise.h"

#include <algorithm>

#include "formula/star_text.h"

namespace vistels {

namespace {

constexpr std::string_view left_quote = "\u201C";
constexpr std::string_view right_quote = "\u201D";
constexpr std::string_view line_separator = "\u2028";
constexpr std::string_view old_row_code = "[RO]";
constexpr std::string_view row_code = "[RN]";

// In the order in which a plain search tries them.
constexpr std::string_view searched_codes[] = {"QN", "QC", "AC", "AN", "RN", "NT"};

// No replacement makes a text that another one replaces, so one walk does all of them.
std::string with_replacements(std::string_view typed, bool replaces_line_separator) {
    std::string text;
    text.reserve(typed.size() + 1);
    for (std::size_t at = 0; at < typed.size();) {
        const auto rest = typed.substr(at);
        if (rest.starts_with(left_quote) || rest.starts_with(right_quote)) {
            text += '"';
            at += left_quote.size();
        } else if (rest.starts_with(old_row_code)) {
            text += row_code;
            at += old_row_code.size();
        } else if (replaces_line_separator && rest.starts_with(line_separator)) {
            text += ' ';
            at += line_separator.size();
        } else {
            const bool ends_line = rest.front() == '\r' || rest.front() == '\n';
            text += ends_line ? ' ' : rest.front();
            ++at;
        }
    }
    return text;
}

std::string without(std::string text, std::string_view letters) {
    std::erase_if(text, [&](char letter) { return letters.find(letter) != std::string_view::npos; });
    return text;
}

std::string plain_search(const std::string& text) {
    const std::string packed = without(text, " *");
    if (packed.empty() || is_star_text(packed)) return '"' + packed + "*\"";
    const std::string word = "\"*" + without(text, "*") + "*\"";
    std::string formula;
    formula.reserve((word.size() + 7) * std::size(searched_codes));
    for (const auto code : searched_codes) {
        if (!formula.empty()) formula += " | ";
        formula += '[';
        formula += code;
        formula += ']';
        formula += word;
    }
    return formula;
}

bool begins_with_operator(std::string_view text) {
    return text.starts_with('!') || text.starts_with('&') || text.starts_with('|');
}

normalised_formula with_operator_behind_space(const std::string& text) {
    if (!begins_with_operator(text)) return {text, 0};
    return {' ' + text, 1};
}

}  // namespace

normalised_formula normalised_for_filter(std::string_view typed) {
    std::string text = with_replacements(typed, true);
    if (!text.empty() && text.find_first_of("\"()") == std::string::npos) text = plain_search(text);
    return with_operator_behind_space(text);
}

normalised_formula normalised_for_display(std::string_view typed) {
    return with_operator_behind_space(with_replacements(typed, false));
}

}  // namespace vistels
