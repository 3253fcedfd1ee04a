// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/text_memo.h"

#include <algorithm>

#include "formula/word_matching.h"

namespace vistels {

namespace {

constexpr std::size_t first_size = 256;
// With this much remembered it starts anew: there is no end to the texts that a person may write.
constexpr std::size_t most_texts = std::size_t{1} << 21U;
constexpr std::size_t most_blocks = std::size_t{1} << 23U;

}  // namespace

text_memo::text_memo(const filter_program& program, word_source source, bool filter_word::*marks_by)
    : program_(program), source_(source), marks_by_(marks_by) {
    const auto& words = program.words();
    for (std::size_t word = 0; marks_by != nullptr && word < words.size(); ++word) {
        if (words[word].*marks_by && words[word].decides != source) markers_.push_back(word);
    }
    is_used_ = !markers_.empty() || !program.words_about(source).empty();
    forget_all();
}

void text_memo::forget_all() {
    entries_.assign(first_size, {});
    mask_ = first_size - 1;
    texts_.clear();
    more_bits_.clear();
}

text_memo::entry& text_memo::free_place(const void* identity) {
    std::size_t at = place_of(identity);
    while (entries_[at].text != nullptr) at = (at + 1) & mask_;
    return entries_[at];
}

void text_memo::grow() {
    auto earlier = std::move(entries_);
    entries_.assign(earlier.size() * 2, {});
    mask_ = entries_.size() - 1;
    for (const auto& one : earlier) {
        if (one.text != nullptr) free_place(one.text) = one;
    }
}

const text_memo::entry& text_memo::add(const shared_text& text) {
    const std::size_t blocks = program_.blocks();
    if (texts_.size() >= most_texts || more_bits_.size() + blocks > most_blocks) forget_all();
    if (texts_.size() * 2 >= entries_.size()) grow();
    entry made;
    made.text = text.identity();
    if (blocks > 1) {
        made.block = static_cast<std::uint32_t>(more_bits_.size());
        more_bits_.resize(more_bits_.size() + blocks);
    }
    const auto& words = program_.words();
    const auto meets = [&](std::size_t word) {
        return matches(text.str(), words[word].text, words[word].mode);
    };
    for (const std::size_t word : program_.words_about(source_)) {
        if (!meets(word)) continue;
        made.marks = marks_by_ != nullptr;
        const std::uint64_t bit = std::uint64_t{1} << (word % 64);
        (blocks > 1 ? more_bits_[made.block + word / 64] : made.bits) |= bit;
    }
    made.marks = made.marks || std::any_of(markers_.begin(), markers_.end(), meets);
    texts_.push_back(text);
    entry& place = free_place(made.text);
    place = made;
    return place;
}

}  // namespace vistels
