// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <unordered_map>
#include <utility>

#include "formula/formula_completion.h"

namespace vistels {

namespace {

// In the order of `texts_`.
enum text_kind : std::size_t { row_name, row_category, qual_name, qual_category, attr_name, attr_category };
constexpr std::array<std::string_view, 6> kind_codes{"RN", "RC", "QN", "QC", "AN", "AC"};

// Each different text is met as a number; the many clips cost no comparing of texts.
using use_counts = std::unordered_map<shared_text, std::size_t>;

void count(use_counts& counts, shared_text text, std::size_t uses = 1) {
    if (!text.empty()) counts[std::move(text)] += uses;
}

void count_clip(std::array<use_counts, 6>& counts, const sxy_CLIP& clip) {
    const auto qualifiers = clip.qualifiers();
    for (const auto& qualifier : *qualifiers) {
        count(counts[qual_name], qualifier.name());
        count(counts[qual_category], qualifier.category());
        for (const auto& attribute : qualifier.attributes()) {
            count(counts[attr_name], attribute.name);
            count(counts[attr_category], attribute.attribute_category);
        }
    }
}

std::vector<formula_text> sorted(const use_counts& counts, std::string_view code) {
    std::vector<formula_text> texts;
    texts.reserve(counts.size());
    for (const auto& [text, uses] : counts) texts.push_back({std::string(code), text.str(), uses});
    std::ranges::sort(texts, [](const formula_text& a, const formula_text& b) {
        return a.uses != b.uses ? a.uses > b.uses : a.text < b.text;
    });
    return texts;
}

}  // namespace

formula_texts::formula_texts(const timeline_snapshot& timeline) {
    std::array<use_counts, 6> counts;
    for (const auto& row : timeline.rows) {
        count(counts[row_name], shared_text(row->name()), row->clips().size());
        count(counts[row_category], shared_text(row->category()), row->clips().size());
        for (const auto& clip : row->clips()) count_clip(counts, *clip);
    }
    for (std::size_t kind = 0; kind < counts.size(); ++kind) {
        texts_[kind] = sorted(counts[kind], kind_codes[kind]);
    }
}

const std::vector<formula_text>& formula_texts::of(std::string_view code) const {
    static const std::vector<formula_text> none;
    const auto found = std::ranges::find(kind_codes, code);
    return found == kind_codes.end() ? none : texts_[static_cast<std::size_t>(found - kind_codes.begin())];
}

}  // namespace vistels
