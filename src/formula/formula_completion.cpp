// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/formula_completion.h"

#include <algorithm>
#include <optional>
#include <tuple>
#include <utility>

#include "formula/code_points.h"
#include "formula/normalise.h"
#include "formula/tokenise.h"

namespace vistels {

namespace {

constexpr std::size_t npos = std::string_view::npos;
constexpr std::string_view marks = "\"()[]|&!";  // what ends a plain word

constexpr std::string_view typed_codes[] = {"QN", "QC", "AN", "AC", "RN", "RC", "NT"};

// The normalised text and where in it the caret is, in bytes.
struct typed_text {
    normalised_formula formula;
    std::size_t caret = 0;

    std::string_view before_caret() const { return std::string_view(formula.text).substr(0, caret); }

    // Bytes of the normalised text as characters of the typed one.
    text_span span(std::size_t first, std::size_t last) const {
        const std::string_view text = formula.text;
        const std::size_t start = count_code_points(text.substr(0, first));
        const std::size_t shift = std::min(start, formula.put_in_front);
        return {start - shift, count_code_points(text.substr(first, last - first))};
    }
};

// The codes of a word that begins behind `text`.
std::vector<std::string> codes_behind(std::string_view text) {
    const auto tokens = tokenise(std::string(text) + "\"\"");
    auto codes = tokens.back().ray_word_IDENTIFIERS;
    if (codes.empty()) codes.emplace_back("QN");
    return codes;
}

std::string without_star(std::string_view typed) {
    return std::string(typed.starts_with('*') ? typed.substr(1) : typed);
}

formula_completion quoted_word(const typed_text& typed) {
    const std::string_view text = typed.formula.text;
    const std::size_t open = typed.before_caret().rfind('"');
    // With an odd quote somewhere it is this word that is not closed yet, most likely.
    const std::size_t close = unpaired_quote(text) == npos ? text.find('"', typed.caret) : npos;
    const std::size_t end = close == npos ? typed.caret : close + 1;
    return {typed_part::quoted_word, typed.span(open, end),
            without_star(typed.before_caret().substr(open + 1)), codes_behind(text.substr(0, open))};
}

std::size_t skip_spaces(std::string_view text, std::size_t at) {
    return std::min(text.find_first_not_of(' ', at), text.size());
}

formula_completion code_behind(const typed_text& typed, std::size_t bracket) {
    const std::string_view text = typed.formula.text;
    const std::size_t comma = typed.before_caret().find_last_of("[,");
    const std::size_t start = std::min(skip_spaces(text, std::max(bracket, comma) + 1), typed.caret);
    const std::size_t end = std::min(text.find_first_of(" ,*\"()[]|&!", typed.caret), text.size());
    return {
        typed_part::codes, typed.span(start, end), std::string(text.substr(start, typed.caret - start)), {}};
}

formula_completion plain_word(const typed_text& typed) {
    const std::string_view text = typed.formula.text;
    const auto before = typed.before_caret();
    const std::size_t mark = before.find_last_of(marks);
    const std::size_t start = skip_spaces(before, mark == npos ? 0 : mark + 1);
    if (start == typed.caret) return {};
    const std::size_t end = std::min(text.find_first_of(" \"()[]|&!", typed.caret), text.size());
    formula_completion found{typed_part::plain_word,
                             typed.span(start, end),
                             without_star(text.substr(start, typed.caret - start)),
                             {"QN", "QC", "AN", "AC", "RN", "RC"}};
    if (mark != npos && text[mark] == ']') {
        found.part = typed_part::quoted_word;
        found.codes = codes_behind(text.substr(0, start));
    }
    return found;
}

char lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

std::string lowered(std::string text) {
    std::ranges::transform(text, text.begin(), lower);
    return text;
}

// How well a text fits: the lower the better; nothing when it does not.
std::optional<int> rank_of(const std::string& text, const std::string& typed, const std::string& low) {
    if (text.starts_with(typed)) return 0;
    const std::string low_text = lowered(text);
    if (low_text.starts_with(low)) return 1;
    if (text.find(typed) != npos) return 2;
    return low_text.find(low) != npos ? std::optional(3) : std::nullopt;
}

bool is_writable(const formula_completion& at, const formula_text& one) {
    if (at.part == typed_part::codes) return true;
    return written_term({one.code, one.text}).ok();
}

std::vector<formula_text> candidates(const formula_completion& at, const formula_texts& texts) {
    std::vector<formula_text> all;
    if (at.part == typed_part::codes) {
        for (const auto code : typed_codes) all.push_back({std::string(code), std::string(code), 0});
        return all;
    }
    // Of a word's own codes the last one decides whether it matches.
    const bool has_own_codes = at.part == typed_part::quoted_word;
    for (const auto& code : at.codes) {
        if (has_own_codes && &code != &at.codes.back()) continue;
        const auto& more = texts.of(code);
        all.insert(all.end(), more.begin(), more.end());
    }
    return all;
}

}  // namespace

formula_completion completion_at(std::string_view typed, std::size_t caret) {
    typed_text here{normalised_for_display(typed)};
    here.caret = byte_of_code_point(here.formula.text, caret + here.formula.put_in_front);
    const auto before = here.before_caret();
    if (std::ranges::count(before, '"') % 2 == 1) return quoted_word(here);
    const std::size_t mark = before.find_last_of(marks);
    if (mark != npos && before[mark] == '[') return code_behind(here, mark);
    return plain_word(here);
}

std::vector<formula_text> completions(const formula_completion& at, const formula_texts& texts,
                                      std::size_t most) {
    struct ranked {
        int rank;
        formula_text text;
    };
    const std::string low = lowered(at.typed);
    std::vector<ranked> fitting;
    for (auto& one : candidates(at, texts)) {
        if (const auto rank = rank_of(one.text, at.typed, low)) fitting.push_back({*rank, std::move(one)});
    }
    std::ranges::stable_sort(fitting, [](const ranked& a, const ranked& b) {
        return std::tuple(a.rank, b.text.uses) < std::tuple(b.rank, a.text.uses);
    });
    std::vector<formula_text> chosen;
    for (auto& one : fitting) {
        if (chosen.size() == most) break;
        if (is_writable(at, one.text)) chosen.push_back(std::move(one.text));
    }
    return chosen;
}

result<edited_formula> with_completion(std::string_view typed, const formula_completion& at,
                                       const formula_text& chosen) {
    const std::size_t first = byte_of_code_point(typed, at.replaced.start);
    const std::size_t last = first + byte_of_code_point(typed.substr(first), at.replaced.length);
    const std::string left(typed.substr(0, first));
    const std::string right(typed.substr(last));
    std::string written = chosen.text;
    if (at.part == typed_part::codes) {
        const std::size_t next = skip_spaces(right, 0);
        if (next == right.size() || (right[next] != ',' && right[next] != ']')) written += ']';
    } else {
        const formula_term term{chosen.code, chosen.text};
        const auto made = at.part == typed_part::quoted_word ? written_word(chosen.text) : written_term(term);
        if (!made) return made.error();
        written = made.value();
    }
    return edited_formula{left + written + right, at.replaced.start + count_code_points(written)};
}

}  // namespace vistels
