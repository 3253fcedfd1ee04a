// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "formula/filter_program.h"
#include "util/shared_text.h"

namespace vistels {

// Which words about one kind of value each text matches, found out once a text. Texts are known by their
// identity and kept alive, so that it stays theirs. One thread.
class text_memo {
  public:
    struct entry {
        const void* text = nullptr;
        std::uint64_t bits = 0;   // of the words, when there are at most 64
        std::uint32_t block = 0;  // where the bits begin in more_bits(), when there are more
        bool marks = false;       // the text matches a word that marks qualifiers by it
    };

    // `marks_by`: the words' flag that this memo's marks are about; null: none.
    text_memo(const filter_program& program, word_source source, bool filter_word::*marks_by);

    // Whether any word asks for such values.
    bool is_used() const { return is_used_; }
    // Of a text that is not empty; until the next call.
    const entry& find(const shared_text& text) {
        const void* const identity = text.identity();
        std::size_t at = place_of(identity);
        while (entries_[at].text != identity) {
            if (entries_[at].text == nullptr) return add(text);
            at = (at + 1) & mask_;
        }
        return entries_[at];
    }
    const std::uint64_t* more_bits(const entry& of) const { return more_bits_.data() + of.block; }

  private:
    std::size_t place_of(const void* identity) const {
        constexpr std::uint64_t golden_ratio = 0x9E3779B97F4A7C15;
        return static_cast<std::size_t>(reinterpret_cast<std::uintptr_t>(identity) * golden_ratio >> 32U) &
               mask_;
    }
    const entry& add(const shared_text& text);
    void forget_all();
    void grow();
    entry& free_place(const void* identity);

    const filter_program& program_;
    const word_source source_;
    bool filter_word::*const marks_by_;
    bool is_used_ = false;
    std::vector<std::size_t> markers_;  // the words that mark, but do not decide, by such values
    std::vector<entry> entries_;        // a power of two, at most half of them in use
    std::size_t mask_ = 0;
    std::vector<shared_text> texts_;
    std::vector<std::uint64_t> more_bits_;
};

}  // namespace vistels
