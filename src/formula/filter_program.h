// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "formula/parser_ROOT.h"

namespace vistels {

// What of a clip a word is compared with.
enum class word_source {
    row_name,
    row_category,
    qualifier_name,
    qualifier_category,
    attribute_name,
    attribute_category,
    note,
    star,
    nothing
};
inline constexpr std::size_t word_source_count = 9;

// A word of a formula. Its bit is 1 when the clip has a value that matches it.
struct filter_word {
    std::string text;
    wild_card mode = wild_card::MATCH_ALL;
    word_source decides = word_source::nothing;  // what the bit is about: its last code
    bool marks_names = false;                    // it has the code "QN": qualifiers are marked by their names
    bool marks_categories = false;               // "QC", likewise
    std::size_t token = 0;                       // its place in the token list
};

// Bits of the words of one formula, 64 in each number.
using word_bits = std::vector<std::uint64_t>;

// What is known of a truth: it may still turn out to be either.
enum class verdict : std::uint8_t { no = 1, yes = 2, open = 3 };

// The words of a formula and the steps that lead from their bits to a verdict. The tree is laid out flat, the
// groups within a group before it, so that no depth of brackets costs more than its length. Unchanging; any
// thread.
class filter_program {
  public:
    explicit filter_program(const parser_ROOT& formula);

    const std::vector<filter_word>& words() const { return words_; }
    // The words whose bit is about `source`, as places in words().
    const std::vector<std::size_t>& words_about(word_source source) const {
        return by_source_[static_cast<std::size_t>(source)];
    }
    // How many numbers the bits of all words take; at least 1.
    std::size_t blocks() const { return words_.size() / 64 + (words_.size() % 64 != 0 || words_.empty()); }

    // What the formula says of a clip with these bits, of which those in `unknown` (null: none) are not known
    // yet. `results` is room for the groups' results: used again, never read by the caller.
    verdict run(const std::uint64_t* bits, const std::uint64_t* unknown, std::vector<verdict>& results) const;
    // The nodes that have a result after run(), with the place of it in `results`.
    struct group_result {
        std::size_t node = 0;  // in the flat list of the formula's nodes
        std::size_t result = 0;
    };
    const std::vector<group_result>& groups() const { return groups_; }

  private:
    enum class step_kind : std::uint8_t { begin, word, group, end };
    struct step {
        step_kind kind = step_kind::begin;
        token_type combine = token_type::OR;  // of a term: the operator that was pending
        bool starts_true = false;             // of a begin
        std::uint32_t index = 0;              // of the word, or of the group's result
    };

    void take_words(const parser_ROOT& formula);
    void add_group(const parser_ROOT& formula, std::size_t node, std::vector<std::uint32_t>& result_of,
                   const std::vector<std::uint32_t>& word_at);

    std::vector<filter_word> words_;
    std::array<std::vector<std::size_t>, word_source_count> by_source_;
    std::vector<step> steps_;
    std::vector<group_result> groups_;
};

}  // namespace vistels
