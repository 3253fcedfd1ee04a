// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/clip_filter.h"

#include <gtest/gtest.h>

#include "formula/word_matching.h"
#include "support/literal_formula.h"
#include "support/timeline_builder.h"

namespace vistels {

namespace {

using testing::clip_of;
using testing::literal_clip;
using testing::literal_formula;
using testing::random_formulas;

std::shared_ptr<const clip_note> note_of(const std::string& text) {
    clip_note note;
    note.note_string = text;
    return std::make_shared<const clip_note>(note);
}

struct stamp {
    std::string name;
    std::string category;
    std::vector<std::pair<std::string, std::string>> attributes = {};
};

sxy_CLIP stamped(const std::vector<stamp>& stamps, const std::string& note = {}, int stars = 0) {
    sxy_CLIP clip = clip_of("clip", 1, 2);
    clip.set_stars(stars);
    if (!note.empty()) clip.set_note(note_of(note));
    qual_ROOT all;
    for (const auto& one : stamps) {
        qual_ITEM item;
        item.set_name(shared_text(one.name));
        item.set_category(shared_text(one.category));
        std::vector<clip_attribute_ITEM> attributes;
        for (const auto& [name, category] : one.attributes) {
            clip_attribute_ITEM attribute;
            attribute.name = shared_text(name);
            attribute.attribute_category = shared_text(category);
            attributes.push_back(std::move(attribute));
        }
        if (!attributes.empty()) item.set_attributes(std::move(attributes));
        all.push_back(std::move(item));
    }
    clip.set_qualifiers(std::move(all));
    return clip;
}

sxy_ROW row_named(const std::string& name, const std::string& category) {
    sxy_ROW row = testing::row_of("row", name);
    row.set_category(category);
    return row;
}

// "1" for each qualifier that is marked, "0" for the others.
std::string marks_of(const sxy_CLIP& clip) {
    std::string marks;
    for (const auto& item : *clip.qualifiers()) marks += item.filtered_in() ? '1' : '0';
    return marks;
}

TEST(clip_filter, matches_values_as_written) {
    struct example {
        const char* value;
        const char* pattern;
        const char* meets;  // of ALL, PREFIX, SUFFIX, ANYWHERE
    };
    const example examples[] = {
        {"Goal", "Goal", "1111"},   {"Goal", "goal", "0000"}, {"Goal kick", "Goal", "0101"},
        {"a Goal", "Goal", "0011"}, {"", "", "0000"},         {"Goal", "", "0000"},
        {"e\u0301", "é", "0000"},   {"naïve", "ï", "0001"},   {" Goal", "Goal", "0011"},
        {"Go", "Goal", "0000"},
    };
    for (const auto& one : examples) {
        std::string meets;
        for (const auto mode : {wild_card::MATCH_ALL, wild_card::MATCH_PREFIX, wild_card::MATCH_SUFFIX,
                                wild_card::MATCH_ANYWHERE}) {
            meets += matches(one.value, one.pattern, mode) ? '1' : '0';
        }
        EXPECT_EQ(meets, one.meets) << one.value << " / " << one.pattern;
    }
}

TEST(clip_filter, reads_each_form_of_the_language) {
    const auto clip = stamped({{"Goal", "What", {{"left", "Foot"}}}, {"Near", "Where"}}, "too late", 2);
    const auto plain = stamped({});
    const auto row = row_named("row 1", "Attack");
    struct example {
        const char* formula;
        bool passes;
    };
    const example examples[] = {
        {"", false},
        {"\"Goal\"", true},
        {"Goal", true},  // a plain search
        {"goa", false},
        {"lat", true},
        {"!\"Goal\"", false},
        {"!\"Shot\"", false},  // the operator in front was replaced: it starts false
        {"(!\"Shot\")", true},
        {"(!\"Goal\")", false},
        {" !\"Shot\"", false},
        {"((!\"Goal\"))", true},  // the first token of its first group is a not: it starts true
        {"((\"Shot\"))", false},
        {"(((!\"Goal\") & \"Goal\"))", true},
        {"\"Near\" ! \"Goal\"", false},
        {"\"Near\" ! \"Shot\"", true},
        {"\"Goal\" | \"x\" & \"x\"", false},  // no precedence
        {"\"Goal\" | (\"x\" & \"x\")", true},
        {"\"x\" \"Goal\"", true},  // the operator before is still pending
        {"\"Goal\" & \"Near\" \"x\"", false},
        {"\"Goal\" & | \"x\"", true},  // of two operators the later one
        {"\"Goal\" | & \"x\"", false},
        {"\"Goal\" & ()", true},  // an empty group is no term
        {"()", false},
        {"\"Goal\" & (())", false},  // a group of an empty one is
        {"\"*\"", false},
        {"\"\"", false},
        {"[RN]\"row 1\"", true},
        {"[RO]\"row*\"", true},
        {"[RC]\"Attack\"", true},
        {"[QN,RN]\"Goal\"", false},  // the last code decides
        {"[RN,QN]\"Goal\"", true},
        {"[QC]\"Where\"", true},
        {"[AN]\"left\" & [AC]\"Foot\"", true},
        {"[NT]\"*late*\"", true},
        {"[NT]\"*Late*\"", false},
        {"\"✭✭\"", true},
        {"\"✭\"", false},
        {"\"✭*\"", true},
        {"\"✭✭✭*\"", false},
        {"✭✭", true},
        {"✭ ✭ ✭", false},
        {"[RN]\"✭✭\"", true},   // the stars decide: their code comes last
        {"\"Goal\" )", false},  // a syntax error lets nothing pass
        {"[XX]\"Goal\"", false},
    };
    for (const auto& one : examples) {
        auto parsed = parser_ROOT::for_filter(one.formula);
        clip_filter filter(parsed);
        EXPECT_EQ(filter.judge(clip, &row), one.passes) << one.formula;
        EXPECT_EQ(filter.explain(clip, &row, parsed), one.passes) << one.formula;
    }
    // Without a row no word about rows is met, without stars none about stars.
    EXPECT_FALSE(clip_filter("[RN]\"*\"").judge(plain, nullptr));
    EXPECT_TRUE(clip_filter("(![RN]\"row 1\")").judge(plain, nullptr));
    EXPECT_TRUE(clip_filter("(!\"✭*\")").judge(plain, nullptr));
}

TEST(clip_filter, marks_qualifiers_whatever_the_role_of_the_word) {
    struct example {
        const char* formula;
        const char* marks;
    };
    const example examples[] = {
        {"\"Goal\"", "100"},
        {"[QC]\"What\"", "101"},
        {"(! \"Goal\")", "100"},
        {"\"x\" & [QC]\"Where\"", "010"},
        {"[QN,RN]\"Goal\" | [QC,RN]\"Where\"", "110"},
        {"[RN]\"Goal\"", "000"},
        {"Goal", "100"},
        {"a", "111"},
    };
    const auto row = row_named("row 1", "");
    for (const auto& one : examples) {
        const auto clip = stamped({{"Goal", "What"}, {"Near", "Where"}, {"Shot", "What"}});
        clip_filter filter{std::string_view(one.formula)};
        const bool passes = filter.judge_and_mark(clip, &row);
        EXPECT_EQ(clip.filtered_in(), passes) << one.formula;
        EXPECT_EQ(marks_of(clip), one.marks) << one.formula;
        std::string met;
        for (const auto& item : *clip.qualifiers()) met += filter.meets(item) ? '1' : '0';
        EXPECT_EQ(met, one.marks) << one.formula;
    }
}

TEST(clip_filter, leaves_marks_of_the_last_good_formula) {
    auto row = row_named("row", "");
    row.clips().insert(std::make_shared<const sxy_CLIP>(stamped({{"Goal", ""}})));
    const std::vector<row_pointer> rows{std::make_shared<const sxy_ROW>(row)};
    const auto& clip = *rows[0]->clips()[0];
    job work;
    put_in_place(*clip_filter("\"Goal\"").passing_and_marks(rows, work));
    for (const char* wrong : {"\"Goal", "[ZZ]\"x\"", "(\"x\"", "x\"a\""}) {
        clip_filter filter{std::string_view(wrong)};
        EXPECT_TRUE(filter.has_error());
        const auto found = filter.passing_and_marks(rows, work);
        EXPECT_EQ(found->passing + filter.passing(rows, work)->passing, 0U);
        EXPECT_EQ(found->total, 1U);
        EXPECT_FALSE(found->clips.contains(clip) || filter.meets((*clip.qualifiers())[0]));
        put_in_place(*found);
        clip_set passing;
        filter.judge_and_mark(*rows[0], passing);
        filter.judge_and_mark(clip, rows[0].get());
        EXPECT_TRUE(clip.filtered_in() && marks_of(clip) == "1") << wrong;
    }
}

// Clips and formulas of few words, so that they meet often.
struct random_clips {
    random_formulas random;
    std::vector<std::string> words{"a", "ab", "b", "Goal", "✭", "✭✭", "é", "row 1", "kick off"};

    const std::string& word() { return words[static_cast<std::size_t>(random.below(9))]; }
    std::string word_or_none() { return random.below(4) == 0 ? "" : word(); }

    sxy_CLIP clip() {
        std::vector<stamp> stamps;
        for (int n = random.below(4); n > 0; --n) {
            stamp one{word_or_none(), word_or_none()};
            for (int m = random.below(3); m > 0; --m) {
                one.attributes.emplace_back(word_or_none(), word_or_none());
            }
            stamps.push_back(one);
        }
        return stamped(stamps, random.below(2) == 0 ? "" : word() + " " + word(), random.below(5) - 1);
    }
};

literal_clip literal_of(const sxy_CLIP& clip, const sxy_ROW* row) {
    literal_clip plain;
    for (const auto& item : *clip.qualifiers()) {
        plain.qualifier_names.push_back(item.name().str());
        plain.qualifier_categories.push_back(item.category().str());
        for (const auto& attribute : item.attributes()) {
            plain.attribute_names.push_back(attribute.name.str());
            plain.attribute_categories.push_back(attribute.attribute_category.str());
        }
    }
    plain.note = clip.note_text();
    if (row != nullptr) {
        plain.row_name = row->name();
        plain.row_category = row->category();
    }
    plain.stars = clip.stars();
    return plain;
}

// The marks that the plain evaluator's words ask for.
std::string literal_marks(const literal_formula& formula, const literal_clip& clip) {
    std::string marks;
    for (std::size_t n = 0; n < clip.qualifier_names.size(); ++n) {
        bool marked = false;
        for (const auto& token : formula.tokens) {
            if (token.type != "WORDS") continue;
            const auto mode = token.mode == "MATCH_ALL"      ? wild_card::MATCH_ALL
                              : token.mode == "MATCH_PREFIX" ? wild_card::MATCH_PREFIX
                              : token.mode == "MATCH_SUFFIX" ? wild_card::MATCH_SUFFIX
                                                             : wild_card::MATCH_ANYWHERE;
            for (const auto& code : token.codes) {
                marked = marked || (code == "QN" && matches(clip.qualifier_names[n], token.chars, mode)) ||
                         (code == "QC" && matches(clip.qualifier_categories[n], token.chars, mode));
            }
        }
        marks += marked ? '1' : '0';
    }
    return marks;
}

TEST(clip_filter, agrees_with_the_plain_evaluator) {
    random_clips random{random_formulas(20261121)};
    std::size_t passing = 0;
    std::size_t well_formed = 0;
    for (int n = 0; n < 10'800; ++n) {
        const bool is_tidy = n % 4 != 0;
        const std::string text = is_tidy ? random.random.well_formed(random.words) : random.random.any();
        literal_formula literal(text, true);
        auto parsed = parser_ROOT::for_filter(text);
        clip_filter filter(parsed);
        ASSERT_EQ(filter.has_error(), !literal.errors.empty()) << text;
        if (filter.has_error()) continue;
        ++well_formed;
        for (int k = 0; k < 12; ++k) {
            const auto row = row_named(random.word_or_none(), random.word_or_none());
            const sxy_ROW* const in = k % 6 == 0 ? nullptr : &row;
            const auto clip = random.clip();
            const auto plain = literal_of(clip, in);
            const bool expected = literal.evaluate(plain) == 1;
            passing += expected ? 1 : 0;
            ASSERT_EQ(filter.judge_and_mark(clip, in), expected) << text;
            ASSERT_EQ(marks_of(clip), literal_marks(literal, plain)) << text;
            ASSERT_EQ(filter.explain(clip, in, parsed), expected) << text;
            for (std::size_t token = 0; token < literal.tokens.size(); ++token) {
                ASSERT_EQ(parsed.ray_token_ITEMs()[token].FLAG_Word_as_present, literal.tokens[token].mark)
                    << text << " token " << token;
            }
            for (std::size_t node = 0; node < literal.flat.size(); ++node) {
                ASSERT_EQ(parsed.ray_FLAT_copy_of_all_Node_items()[node].result_of_NODE_EVALUATIONS,
                          literal.flat[node]->result)
                    << text << " node " << node;
            }
        }
    }
    // Neither all nor none: the comparison has something to compare.
    EXPECT_GE(well_formed * 12, 100'000U);
    EXPECT_GT(passing, well_formed);
    EXPECT_LT(passing, well_formed * 10);
}

// A timeline's worth of clips, and the same formula for all.
std::vector<row_pointer> random_rows(random_clips& random, std::size_t rows, std::size_t clips) {
    std::vector<row_pointer> made;
    for (std::size_t row = 0; row < rows; ++row) {
        auto one = std::make_shared<sxy_ROW>(row_named(random.word_or_none(), random.word_or_none()));
        std::vector<clip_pointer> all;
        for (std::size_t n = 0; n < clips; ++n) {
            auto clip = random.clip();
            clip.set_id(std::to_string(row) + "/" + std::to_string(n));
            all.push_back(std::make_shared<const sxy_CLIP>(std::move(clip)));
        }
        one->clips().assign(std::move(all));
        made.push_back(std::move(one));
    }
    return made;
}

// Of clips and qualifiers: what they are, and what the qualifiers were before.
struct marks_now {
    std::string clips, qualifiers, previous;
    bool operator==(const marks_now&) const = default;
};

marks_now all_marks(const std::vector<row_pointer>& rows) {
    marks_now marks;
    for (const auto& row : rows) {
        for (const auto& clip : row->clips()) {
            marks.clips += clip->filtered_in() ? '1' : '0';
            for (const auto& item : *clip->qualifiers()) {
                marks.qualifiers += item.filtered_in() ? '1' : '0';
                marks.previous += item.filtered_in_previous_now() ? '1' : '0';
            }
        }
    }
    return marks;
}

TEST(clip_filter, finds_the_same_with_and_without_marks_and_row_by_row) {
    random_clips random{random_formulas(7)};
    const auto rows = random_rows(random, 3, 700);
    job work;
    for (const char* text : {"a", "\"ab\" | [NT]\"*b*\"", "\"ab\" | [NT]\"*b*\"", "(![QC]\"a*\")", "✭"}) {
        const marks_now before = all_marks(rows);
        clip_filter filter{std::string_view(text)};
        const auto found = filter.passing(rows, work);
        const auto outcome = filter.passing_and_marks(rows, work);
        ASSERT_TRUE(found && outcome);
        clip_set by_row;
        for (const auto& row : rows) filter.judge(*row, by_row);
        EXPECT_TRUE(all_marks(rows) == before) << "judging alone changed marks: " << text;
        put_in_place(*outcome);
        EXPECT_EQ(outcome->passing, found->passing) << text;
        EXPECT_EQ(found->total, 2100U);
        EXPECT_EQ(work.progress(), 1);
        std::string met;
        std::size_t counted = 0;
        for (std::size_t n = 0; n < rows.size(); ++n) {
            EXPECT_EQ(count_passing(*rows[n], found->clips), found->rows[n].passing) << text;
            counted += found->rows[n].passing;
            for (const auto& clip : rows[n]->clips()) {
                const bool passes = filter.judge(*clip, rows[n].get());
                for (const clip_set* set :
                     {&found->clips, &outcome->clips, static_cast<const clip_set*>(&by_row)}) {
                    ASSERT_EQ(set->contains(*clip), passes) << text;
                }
                ASSERT_EQ(clip->filtered_in(), passes) << text;
                for (const auto& item : *clip->qualifiers()) met += filter.meets(item) ? '1' : '0';
            }
        }
        EXPECT_EQ(counted, found->passing) << text;
        EXPECT_TRUE(all_marks(rows).qualifiers == met) << text;
        EXPECT_TRUE(all_marks(rows).previous == before.qualifiers) << text;
    }
    unfilter(rows);
    EXPECT_EQ(all_marks(rows).clips.find('0'), std::string::npos);
    EXPECT_EQ(all_marks(rows).qualifiers.find('1'), std::string::npos);
    work.cancel();
    EXPECT_FALSE(clip_filter("a").passing(rows, work) || clip_filter("a").passing_and_marks(rows, work));
}

// Whatever the numbers and their order: each clip is in the set or not, as it was put last.
TEST(clip_set, holds_what_was_put_into_it_in_any_order) {
    std::vector<sxy_CLIP> clips(5000);
    for (const auto& clip : clips) clip.number();
    const sxy_CLIP unnumbered;
    for (const int step : {1, 4999, 1237}) {
        clip_set set;
        std::vector<bool> expected(clips.size());
        for (std::size_t n = 0, at = 2500; n < clips.size(); ++n, at = (at + step) % clips.size()) {
            EXPECT_FALSE(set.contains(clips[at]));
            set.put(clips[at], expected[at] = n % 3 != 0);
            if (n % 5 == 0) set.put(clips[at], expected[at] = false);
        }
        for (std::size_t at = 0; at < clips.size(); ++at) ASSERT_EQ(set.contains(clips[at]), expected[at]);
        EXPECT_FALSE(set.contains(unnumbered));
    }
    sxy_CLIP copy = clips[0];
    EXPECT_EQ(copy.number(), clips[0].number());
    copy.set_id("another");
    EXPECT_NE(copy.number(), clips[0].number());
}

TEST(clip_filter, takes_more_words_than_fit_in_a_number) {
    random_clips random{random_formulas(99)};
    for (const int words : {63, 64, 65, 128, 200}) {
        // The words that decide stand at the end.
        std::string text = "\"x0\"";
        for (int n = 1; n < words - 3; ++n) text += " | \"x" + std::to_string(n) + "\"";
        text += " | \"ab\" & [NT]\"*a*\" ! [AN]\"b\"";
        literal_formula literal(text, true);
        auto parsed = parser_ROOT::for_filter(text);
        clip_filter filter(parsed);
        int passing = 0;
        for (int n = 0; n < 300; ++n) {
            const auto clip = random.clip();
            const auto plain = literal_of(clip, nullptr);
            const bool expected = literal.evaluate(plain) == 1;
            passing += expected ? 1 : 0;
            ASSERT_EQ(filter.judge_and_mark(clip, nullptr), expected) << words << " words";
            ASSERT_EQ(marks_of(clip), literal_marks(literal, plain));
            ASSERT_EQ(filter.explain(clip, nullptr, parsed), expected);
        }
        EXPECT_GT(passing, 0);
    }
}

TEST(clip_filter, ends_for_the_deepest_and_longest_formulas) {
    const auto clip = stamped({{"Goal", "What"}});
    constexpr std::size_t depth = 100'000;
    clip_filter deep(std::string(depth, '(') + "\"Goal\"" + std::string(depth, ')'));
    EXPECT_TRUE(deep.judge(clip, nullptr));
    // Each level says not: an odd number of them turns the answer round.
    std::string nots;
    for (std::size_t n = 0; n < depth; ++n) nots += "(!";
    clip_filter negated(nots + "\"Goal\"" + std::string(depth, ')'));
    EXPECT_TRUE(negated.judge(clip, nullptr));
    EXPECT_FALSE(clip_filter(std::string(depth, '(') + "\"Goal\"").judge(clip, nullptr));

    std::string long_one = "\"Goal\"";
    while (long_one.size() < 1'000'000) long_one += " & \"Go*\"";
    clip_filter wide(long_one);
    EXPECT_TRUE(wide.judge_and_mark(clip, nullptr));
    EXPECT_EQ(marks_of(clip), "1");
    // A pattern that nearly matches everywhere.
    const auto slow = stamped({{std::string(400'000, 'a'), ""}});
    clip_filter nearly("\"*" + std::string(200'000, 'a') + "b*\"");
    EXPECT_FALSE(nearly.judge(slow, nullptr));
}

}  // namespace

}  // namespace vistels
