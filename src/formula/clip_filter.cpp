// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/clip_filter.h"

#include <algorithm>
#include <utility>

#include "formula/filter_marks.h"
#include "formula/filter_program.h"
#include "formula/prefetching_visit.h"
#include "formula/star_text.h"
#include "formula/text_memo.h"
#include "formula/word_matching.h"

namespace vistels {

namespace {

// The bits of at most 64 words.
class narrow_bits {
  public:
    explicit narrow_bits(const word_bits& begin) : value_(begin.front()) {}
    void add(const text_memo&, const text_memo::entry& found) { value_ |= found.bits; }
    void set(std::size_t word) { value_ |= std::uint64_t{1} << word; }
    const std::uint64_t* data() const { return &value_; }
    std::uint64_t value() const { return value_; }

  private:
    std::uint64_t value_;
};

// Those of any number of words.
class wide_bits {
  public:
    wide_bits(const word_bits& begin, word_bits& room) : value_(room) { value_ = begin; }
    void add(const text_memo& memo, const text_memo::entry& found) {
        if (value_.size() == 1) {
            value_.front() |= found.bits;
            return;
        }
        const std::uint64_t* const more = memo.more_bits(found);
        for (std::size_t n = 0; n < value_.size(); ++n) value_[n] |= more[n];
    }
    void set(std::size_t word) { value_[word / 64] |= std::uint64_t{1} << (word % 64); }
    const std::uint64_t* data() const { return value_.data(); }

  private:
    word_bits& value_;
};

// The verdicts that bits led to lately.
class verdict_memo {
  public:
    verdict* find(std::uint64_t bits, bool& is_known) {
        if (places_.empty()) places_.resize(size);
        constexpr std::uint64_t golden_ratio = 0x9E3779B97F4A7C15;
        place& here = places_[bits * golden_ratio >> (64U - size_bits)];
        is_known = here.is_used && here.bits == bits;
        here.bits = bits;
        here.is_used = true;
        return &here.found;
    }

  private:
    static constexpr unsigned size_bits = 12;
    static constexpr std::size_t size = std::size_t{1} << size_bits;
    struct place {
        std::uint64_t bits = 0;
        verdict found = verdict::no;
        bool is_used = false;
    };
    std::vector<place> places_;
};

bool meets_stars(const filter_word& word, int stars) {
    const std::size_t wanted = word.text.size() / star_character.size();
    const auto has = static_cast<std::size_t>(std::max(stars, 0));
    return word.mode == wild_card::MATCH_ALL ? has == wanted : has >= wanted;
}

}  // namespace

struct clip_filter::engine {
    explicit engine(const parser_ROOT& formula);

    word_bits row_bits(const sxy_ROW* row) const;
    template <class Bits>
    void add_stars(const sxy_CLIP& clip, Bits& bits);
    template <class Bits, class Marks>
    void add_qualifiers(const qual_ROOT& all, Bits& bits, Marks& marks);
    template <class Bits>
    void add_attributes(const qual_ROOT& all, Bits& bits);
    template <class Bits>
    void add_note(const clip_note& note, Bits& bits) const;
    // What is costly to reach is looked at only where the rest leaves the verdict open: first attributes,
    // then notes.
    enum stage : std::size_t { without_attributes, without_notes, with_all };
    verdict look(const narrow_bits& bits, stage at);
    verdict look(const wide_bits& bits, stage at);
    template <class Bits, class Marks>
    bool decide(const sxy_CLIP& clip, Bits bits, Marks& marks);
    template <class Marks>
    bool decide_one(const sxy_CLIP& clip, const word_bits& begin, Marks& marks);
    template <class Marks, class GoOn>
    std::size_t walk_row(const sxy_ROW& row, Marks& marks, clip_set& passing, const GoOn& go_on);
    template <class Marks>
    bool walk(const std::vector<row_pointer>& rows, Marks& marks, passing_clips& found, job& work);
    bool marks_qualifier(const qual_ITEM& item);
    static void none_passes(const std::vector<row_pointer>& rows, passing_clips& found);
    bool is_narrow() const { return program.blocks() == 1; }

    const bool has_error;
    const filter_program program;
    text_memo names{program, word_source::qualifier_name, &filter_word::marks_names};
    text_memo categories{program, word_source::qualifier_category, &filter_word::marks_categories};
    text_memo attribute_names{program, word_source::attribute_name, nullptr};
    text_memo attribute_categories{program, word_source::attribute_category, nullptr};
    const bool looks_at_qualifiers = names.is_used() || categories.is_used();
    const bool looks_at_attributes = attribute_names.is_used() || attribute_categories.is_used();
    const bool looks_at_notes = !program.words_about(word_source::note).empty();
    const bool looks_at_stars = !program.words_about(word_source::star).empty();

    word_bits unknown[2];  // of the stages before the last
    verdict_memo verdicts[3];
    std::vector<verdict> results;
    word_bits room;
};

clip_filter::engine::engine(const parser_ROOT& formula)
    : has_error(formula.parser_Error()), program(formula) {
    for (auto& bits : unknown) bits.resize(program.blocks());
    const auto set = [&](stage at, word_source source) {
        for (const std::size_t word : program.words_about(source)) {
            unknown[at][word / 64] |= std::uint64_t{1} << (word % 64);
        }
    };
    set(without_attributes, word_source::attribute_name);
    set(without_attributes, word_source::attribute_category);
    set(without_attributes, word_source::note);
    set(without_notes, word_source::note);
}

word_bits clip_filter::engine::row_bits(const sxy_ROW* row) const {
    word_bits bits(program.blocks());
    const auto add = [&](word_source source, const std::string& value) {
        for (const std::size_t word : program.words_about(source)) {
            const auto& one = program.words()[word];
            if (matches(value, one.text, one.mode)) bits[word / 64] |= std::uint64_t{1} << (word % 64);
        }
    };
    if (row == nullptr) return bits;
    if (!program.words_about(word_source::row_name).empty()) add(word_source::row_name, row->name());
    if (!program.words_about(word_source::row_category).empty()) {
        add(word_source::row_category, row->category());
    }
    return bits;
}

template <class Bits>
void clip_filter::engine::add_stars(const sxy_CLIP& clip, Bits& bits) {
    const int stars = clip.stars_in_place();
    if (stars <= 0) return;
    for (const std::size_t word : program.words_about(word_source::star)) {
        if (meets_stars(program.words()[word], stars)) bits.set(word);
    }
}

template <class Bits, class Marks>
void clip_filter::engine::add_qualifiers(const qual_ROOT& all, Bits& bits, Marks& marks) {
    for (const qual_ITEM& item : all) {
        bool marked = false;
        const auto add = [&](text_memo& memo, const shared_text& text) {
            if (!memo.is_used() || text.empty()) return;
            const auto& found = memo.find(text);
            bits.add(memo, found);
            marked = marked || found.marks;
        };
        add(names, item.name_in_place());
        add(categories, item.category_in_place());
        marks.qualifier(item, marked);
    }
}

template <class Bits>
void clip_filter::engine::add_attributes(const qual_ROOT& all, Bits& bits) {
    const auto add = [&](text_memo& memo, const shared_text& text) {
        if (memo.is_used() && !text.empty()) bits.add(memo, memo.find(text));
    };
    for (const qual_ITEM& item : all) {
        const auto* attributes = item.attributes_in_place();
        if (attributes == nullptr) continue;
        for (const auto& attribute : *attributes) {
            add(attribute_names, attribute.name);
            add(attribute_categories, attribute.attribute_category);
        }
    }
}

template <class Bits>
void clip_filter::engine::add_note(const clip_note& note, Bits& bits) const {
    const std::string text = note.text();
    for (const std::size_t word : program.words_about(word_source::note)) {
        const auto& one = program.words()[word];
        if (matches(text, one.text, one.mode)) bits.set(word);
    }
}

verdict clip_filter::engine::look(const narrow_bits& bits, stage at) {
    bool is_known = false;
    verdict* const found = verdicts[at].find(bits.value(), is_known);
    if (!is_known) *found = program.run(bits.data(), at == with_all ? nullptr : unknown[at].data(), results);
    return *found;
}

verdict clip_filter::engine::look(const wide_bits& bits, stage at) {
    return program.run(bits.data(), at == with_all ? nullptr : unknown[at].data(), results);
}

template <class Bits, class Marks>
bool clip_filter::engine::decide(const sxy_CLIP& clip, Bits bits, Marks& marks) {
    const qual_ROOT* const all = clip.qualifiers_in_place();
    if (looks_at_stars) add_stars(clip, bits);
    if (all != nullptr) add_qualifiers(*all, bits, marks);
    verdict found = look(bits, without_attributes);
    if (found == verdict::open && looks_at_attributes) {
        if (all != nullptr) add_attributes(*all, bits);
        found = look(bits, without_notes);
    }
    if (found == verdict::open) {
        if (const auto* note = looks_at_notes ? clip.note_in_place() : nullptr) add_note(*note, bits);
        found = look(bits, with_all);
    }
    const bool passes = found == verdict::yes;
    marks.clip(clip, passes);
    return passes;
}

template <class Marks>
bool clip_filter::engine::decide_one(const sxy_CLIP& clip, const word_bits& begin, Marks& marks) {
    if (is_narrow()) return decide(clip, narrow_bits(begin), marks);
    return decide(clip, wide_bits(begin, room), marks);
}

// Returns how many clips pass; `go_on` is told now and then how many were judged, and may end it.
template <class Marks, class GoOn>
std::size_t clip_filter::engine::walk_row(const sxy_ROW& row, Marks& marks, clip_set& passing,
                                          const GoOn& go_on) {
    const word_bits begin = row_bits(&row);
    std::size_t count = 0;
    prefetching_visit clips(row.clips());
    const auto visit = [&](const sxy_CLIP& clip) {
        const bool passes = decide_one(clip, begin, marks);
        passing.put(clip, passes);
        count += passes ? 1 : 0;
    };
    while (const std::size_t visited = clips.visit_some(visit)) {
        if (!go_on(visited)) break;
    }
    return count;
}

template <class Marks>
bool clip_filter::engine::walk(const std::vector<row_pointer>& rows, Marks& marks, passing_clips& found,
                               job& work) {
    std::size_t all = 0;
    for (const auto& row : rows) all += row->clips().size();
    const auto go_on = [&](std::size_t judged) {
        found.total += judged;
        work.set_progress(static_cast<double>(found.total) / static_cast<double>(all));
        return !work.is_cancelled();
    };
    for (const auto& row : rows) {
        if (work.is_cancelled()) return false;
        const std::size_t passing = walk_row(*row, marks, found.clips, go_on);
        found.rows.push_back({row, passing});
        found.passing += passing;
    }
    return !work.is_cancelled();
}

bool clip_filter::engine::marks_qualifier(const qual_ITEM& item) {
    const auto asks_for = [](text_memo& memo, const shared_text& text) {
        return memo.is_used() && !text.empty() && memo.find(text).marks;
    };
    return asks_for(names, item.name_in_place()) || asks_for(categories, item.category_in_place());
}

void clip_filter::engine::none_passes(const std::vector<row_pointer>& rows, passing_clips& found) {
    for (const auto& row : rows) {
        found.rows.push_back({row, 0});
        found.total += row->clips().size();
    }
}

clip_filter::clip_filter(const parser_ROOT& formula) : engine_(std::make_unique<engine>(formula)) {}
clip_filter::~clip_filter() = default;
clip_filter::clip_filter(clip_filter&&) noexcept = default;
clip_filter& clip_filter::operator=(clip_filter&&) noexcept = default;

bool clip_filter::has_error() const {
    return engine_->has_error;
}

bool clip_filter::looks_at_rows() const {
    return !engine_->program.words_about(word_source::row_name).empty() ||
           !engine_->program.words_about(word_source::row_category).empty();
}

bool clip_filter::judge(const sxy_CLIP& clip, const sxy_ROW* row) {
    if (has_error()) return false;
    no_marks none;
    return engine_->decide_one(clip, engine_->row_bits(row), none);
}

bool clip_filter::judge_and_mark(const sxy_CLIP& clip, const sxy_ROW* row) {
    if (has_error()) return false;
    marks_of_one marks;
    return engine_->decide_one(clip, engine_->row_bits(row), marks);
}

void clip_filter::judge(const sxy_ROW& row, clip_set& passing) {
    if (has_error()) return;
    no_marks none;
    engine_->walk_row(row, none, passing, [](std::size_t) { return true; });
}

void clip_filter::judge_and_mark(const sxy_ROW& row, clip_set& passing) {
    if (has_error()) return;
    marks_of_one marks;
    engine_->walk_row(row, marks, passing, [](std::size_t) { return true; });
}

bool clip_filter::meets(const qual_ITEM& qualifier) {
    return !has_error() && engine_->marks_qualifier(qualifier);
}

bool clip_filter::explain(const sxy_CLIP& clip, const sxy_ROW* row, parser_ROOT& formula) {
    for (auto& token : formula.ray_token_ITEMs()) token.FLAG_Word_as_present = 0;
    for (auto& node : formula.ray_FLAT_copy_of_all_Node_items()) node.result_of_NODE_EVALUATIONS = 0;
    if (has_error()) return false;
    no_marks none;
    wide_bits bits(engine_->row_bits(row), engine_->room);
    engine_->add_stars(clip, bits);
    if (const auto* all = clip.qualifiers_in_place()) {
        engine_->add_qualifiers(*all, bits, none);
        engine_->add_attributes(*all, bits);
    }
    if (const auto* note = clip.note_in_place()) engine_->add_note(*note, bits);
    const auto verdict_of_top = engine_->program.run(bits.data(), nullptr, engine_->results);
    const auto& words = engine_->program.words();
    for (std::size_t word = 0; word < words.size(); ++word) {
        const bool is_set = (bits.data()[word / 64] >> (word % 64) & 1U) != 0;
        formula.ray_token_ITEMs()[words[word].token].FLAG_Word_as_present = is_set ? 1 : -1;
    }
    for (const auto& group : engine_->program.groups()) {
        formula.ray_FLAT_copy_of_all_Node_items()[group.node].result_of_NODE_EVALUATIONS =
            engine_->results[group.result] == verdict::yes ? 1 : -1;
    }
    return verdict_of_top == verdict::yes;
}

std::optional<passing_clips> clip_filter::passing(const std::vector<row_pointer>& rows, job& work) {
    passing_clips found;
    no_marks none;
    if (has_error()) {
        engine_->none_passes(rows, found);
        return found;
    }
    return engine_->walk(rows, none, found, work) ? std::optional(std::move(found)) : std::nullopt;
}

std::optional<filter_outcome> clip_filter::passing_and_marks(const std::vector<row_pointer>& rows,
                                                             job& work) {
    filter_outcome found;
    if (has_error()) {
        engine_->none_passes(rows, found);
        return found;
    }
    bool is_done = false;
    {
        marks_that_differ marks(marks_listed{&found});
        is_done = engine_->walk(rows, marks, found, work);
    }
    return is_done ? std::optional(std::move(found)) : std::nullopt;
}

}  // namespace vistels
