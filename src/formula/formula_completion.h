// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "formula/formula_builder.h"
#include "formula/token_ITEM.h"
#include "timeline/records/sxy_DATA_root.h"
#include "util/result.h"

namespace vistels {

// What is being typed at the caret.
enum class typed_part {
    nothing,      // a place where nothing is to be completed
    quoted_word,  // a word with codes, in quotes or just behind its codes
    plain_word,   // letters outside quotes
    codes,        // inside square brackets
};

struct formula_completion {
    typed_part part = typed_part::nothing;
    // What a completion takes the place of: characters of the typed text; of a quoted word with its quotes.
    text_span replaced;
    std::string typed;               // of it what stands before the caret, without a star in front
    std::vector<std::string> codes;  // those of the word; of a plain one all that have texts
};

// Any text; a caret beyond its end counts as the end. Any thread.
formula_completion completion_at(std::string_view typed, std::size_t caret);

// A text that a word can look for.
struct formula_text {
    std::string code;
    std::string text;
    std::size_t uses = 0;  // clips of rows; qualifiers or attributes

    bool operator==(const formula_text&) const = default;
};

// The row names and categories, and the names and categories of qualifiers and attributes, of one revision of
// a timeline. Made in one walk over its clips, on any thread; unchanging.
class formula_texts {
  public:
    formula_texts() = default;
    explicit formula_texts(const timeline_snapshot& timeline);

    // Each different text once, the most used ones first, those used as often in the order of their bytes;
    // none for a code without texts.
    const std::vector<formula_text>& of(std::string_view code) const;

  private:
    std::array<std::vector<formula_text>, 6> texts_;  // in the order of the codes that have some
};

// What can be offered for what is typed, at most that many: texts that begin with it before those that hold
// it elsewhere, and among them those with letters of the same case first, then by use. A to z match either
// case. Inside square brackets codes. Texts that no formula can hold are left out.
std::vector<formula_text> completions(const formula_completion& at, const formula_texts& texts,
                                      std::size_t most);

// The text after one of these was chosen, with the caret behind it. A failure says why it cannot be written.
result<edited_formula> with_completion(std::string_view typed, const formula_completion& at,
                                       const formula_text& chosen);

}  // namespace vistels
