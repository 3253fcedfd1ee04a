// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "../support/literal_formula.h"
#include "allocation_count.h"
#include "formula/clip_filter.h"
#include "formula/code_points.h"
#include "formula/formula_builder.h"
#include "formula/formula_completion.h"
#include "formula/parser_ROOT.h"

namespace {

using namespace vistels;
using testing::literal_formula;

// The plain reader takes quadratic time.
constexpr std::size_t longest_for_literal = 200;
// A token, or a node, takes as much as so many characters, and there may be one for each.
constexpr std::size_t most_memory_times = 500;

void require(bool holds) {
    if (!holds) std::abort();
}

bool is_within(const text_span& place, std::size_t length) {
    return place.start <= length && place.length <= length - place.start;
}

void check_tokens(const parser_ROOT& parsed) {
    const std::size_t length = count_code_points(parsed.filter_search_string());
    const auto& tokens = parsed.ray_token_ITEMs();
    std::size_t end = 0;
    for (std::size_t place = 0; place < tokens.size(); ++place) {
        const auto& token = tokens[place];
        require(token.token_idx0_position == static_cast<int>(place));
        require(token.type != token_type::EMPTY && token.type != token_type::IDENTIFIERS);
        require(token.place.start >= end && is_within(token.place, length));
        require(is_within(token.identifiers_place, length));
        end = token.place.start + token.place.length;
    }
    for (const auto& problem : parsed.problems()) {
        require(!problem.places.empty());
        for (const auto& place : problem.places) require(place.length > 0 && is_within(place, length));
    }
    require(parsed.parser_Error() == !parsed.parser_Errors_String().empty());
}

void check_tree(const parser_ROOT& parsed) {
    const auto& nodes = parsed.ray_FLAT_copy_of_all_Node_items();
    std::size_t next = 1;
    for (std::size_t place = 0; place < nodes.size(); ++place) {
        const auto& node = nodes[place];
        require(place == 0 || nodes[place - 1].nodel_level_idx0 <= node.nodel_level_idx0);
        if (node.is_leaf) continue;
        for (const std::size_t child : node.sub_Nodes) {
            require(child == next++ && nodes[child].parent_Node == place);
            require(nodes[child].nodel_level_idx0 == node.nodel_level_idx0 + 1);
            require(nodes[child].first_token >= node.first_token);
            require(nodes[child].last_token <= node.last_token);
        }
    }
    require(next == nodes.size() && nodes.back().nodel_level_idx0 == parsed.lowest_node_level());
}

void compare(const parser_ROOT& parsed, const literal_formula& literal) {
    require(parsed.filter_search_string() == literal.text);
    require(parsed.parser_Errors_String() == literal.errors);
    require(parsed.ray_token_ITEMs().size() == literal.tokens.size());
    for (std::size_t place = 0; place < literal.tokens.size(); ++place) {
        const auto& token = parsed.ray_token_ITEMs()[place];
        const auto& expected = literal.tokens[place];
        require(token_type_text(token.type) == expected.type && token.chars == expected.chars);
        require(token.ray_word_IDENTIFIERS == expected.codes);
        require(wild_card_text(token.wild_card_search) == expected.mode);
        require(token.place == text_span{expected.start, expected.length});
    }
    require(parsed.ray_FLAT_copy_of_all_Node_items().size() == literal.flat.size());
    for (std::size_t place = 0; place < literal.flat.size(); ++place) {
        const auto& node = parsed.ray_FLAT_copy_of_all_Node_items()[place];
        const auto& expected = *literal.flat[place];
        require(node.nodel_level_idx0 == expected.level);
        require(node.sub_Nodes.size() == expected.children.size());
        require(node.last_token - node.first_token == expected.tokens.size());
        require(expected.tokens.empty() || expected.tokens.front() == node.first_token);
    }
}

struct judged_clip {
    sxy_CLIP clip;
    testing::literal_clip plain;
};

// A clip with one qualifier, which has one attribute.
judged_clip clip_with(const std::string& text, const std::string& category, int stars) {
    clip_attribute_ITEM attribute;
    attribute.name = shared_text(category);
    attribute.attribute_category = shared_text(text);
    qual_ITEM item;
    item.set_name(shared_text(text));
    item.set_category(shared_text(category));
    item.set_attributes({attribute});
    clip_note note;
    note.note_string = text;
    judged_clip made;
    made.clip.set_qualifiers({item});
    made.clip.set_stars(stars);
    made.clip.set_note(std::make_shared<const clip_note>(note));
    made.plain = {{text}, {category}, {category}, {text}, text, "row 1", category, stars};
    return made;
}

const std::vector<judged_clip>& judged_clips() {
    static const std::vector<judged_clip> all{clip_with("a", "b", 0), clip_with("row 1", "", 2),
                                              clip_with("Goal", "ab", 1), clip_with("", "", 3)};
    return all;
}

// `literal` is null for a text that is too long for it.
void judge(parser_ROOT parsed, literal_formula* literal) {
    clip_filter filter(parsed);
    for (const auto& one : judged_clips()) {
        sxy_ROW row;
        row.set_name("row 1");
        row.set_category(one.plain.row_category);
        const bool passes = filter.judge_and_mark(one.clip, &row);
        require(filter.judge(one.clip, &row) == passes);
        require(filter.explain(one.clip, &row, parsed) == passes);
        if (parsed.parser_Error()) require(!passes);
        if (literal == nullptr || parsed.parser_Error()) continue;
        require((literal->evaluate(one.plain) == 1) == passes);
        for (std::size_t place = 0; place < literal->tokens.size(); ++place) {
            require(parsed.ray_token_ITEMs()[place].FLAG_Word_as_present == literal->tokens[place].mark);
        }
        for (std::size_t place = 0; place < literal->flat.size(); ++place) {
            require(parsed.ray_FLAT_copy_of_all_Node_items()[place].result_of_NODE_EVALUATIONS ==
                    literal->flat[place]->result);
        }
    }
}

// A term changes nothing about what is right or wrong in the rest.
void build(std::string_view text, std::size_t caret, std::string_view value) {
    constexpr char symbols[] = {'&', '|', '!'};
    const formula_term term{"RN", std::string(value)};
    const auto edited = with_term(text, caret, term, symbols[caret % 3]);
    if (edited) {
        require(written_term(term).ok());
        require(edited.value().caret <= count_code_points(edited.value().text));
        const auto after = parser_ROOT::for_display(edited.value().text);
        const bool was_plain = is_plain_search_text(text);
        if (!was_plain) {
            require(after.parser_Errors_String() == parser_ROOT::for_display(text).parser_Errors_String());
        }
        std::size_t same_words = 0;
        for (const auto& token : after.ray_token_ITEMs()) {
            const bool is_new =
                token.type == token_type::WORDS && token.place.start + token.place.length ==
                                                       edited.value().caret + after.characters_put_in_front();
            if (is_new && token.ray_word_IDENTIFIERS == std::vector<std::string>{"RN"}) ++same_words;
        }
        require(same_words == 1);
    }
    const std::string replaced = with_operator_replaced(text, symbols[caret % 3], symbols[(caret + 1) % 3]);
    require(replaced.size() == text.size());
    if (is_plain_search_text(text)) require(replaced == text);
}

void complete(std::string_view text, std::size_t caret, std::string_view value) {
    const auto at = completion_at(text, caret);
    require(is_within(at.replaced, count_code_points(text)));
    if (at.part == typed_part::nothing) return;
    completions(at, formula_texts(), 3);
    const formula_text chosen{at.part == typed_part::codes ? "AN" : "QN", std::string(value), 1};
    const auto done = with_completion(text, at, chosen);
    if (done) require(done.value().caret <= count_code_points(done.value().text));
}

}  // namespace

// The first two bytes are a caret; what stands before a line's end is a value, the rest a formula.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool counting = (vistels::fuzz::count_allocations(), true);
    require(counting);
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    require(vistels::fuzz::is_lean(
        size, "reading a formula", [&] { parser_ROOT::for_filter(text); }, most_memory_times));
    const auto filter = parser_ROOT::for_filter(text);
    check_tokens(filter);
    check_tree(filter);
    const auto display = parser_ROOT::for_display(text);
    check_tokens(display);
    require(display.ray_FLAT_copy_of_all_Node_items().empty());
    require(count_code_points(display.filter_search_string()) ==
            count_code_points(text) + display.characters_put_in_front());
    if (size <= longest_for_literal) {
        literal_formula literal(std::string(text), true);
        compare(filter, literal);
        judge(filter, &literal);
        compare(display, literal_formula(std::string(text), false));
    }
    if (size > longest_for_literal) judge(filter, nullptr);
    if (size < 2) return 0;
    const std::size_t caret = (data[0] * 256U + data[1]) % (size + 1);
    const auto rest = text.substr(2);
    const std::size_t line = rest.find('\n');
    const auto value = line == std::string_view::npos ? std::string_view("row 1") : rest.substr(0, line);
    const auto formula = line == std::string_view::npos ? rest : rest.substr(line + 1);
    build(formula, caret, value);
    complete(formula, caret, value);
    return 0;
}
