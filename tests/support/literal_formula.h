// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

// The language of formulas the slow and plain way: a list of characters, one pass after the other, a tree of
// nodes with copies of their tokens, values as texts. What the product is compared with; it shares no code
// with it. For short texts.
namespace vistels::testing {

struct literal_token {
    std::string type = "CHAR";
    std::string chars;
    std::vector<std::string> codes;
    std::string mode = "MATCH_ALL";
    int mark = 0;
    int position = -1;
    // Where it stands: characters.
    std::size_t start = 0;
    std::size_t length = 1;
    std::string typed;  // the character that it was made of
};

struct literal_node {
    int level = -1;
    std::vector<std::shared_ptr<literal_node>> children;
    literal_node* parent = nullptr;
    std::vector<std::size_t> tokens;  // places in the list
    bool is_group = true;
    int result = 0;
};

// What a clip has that a word can match.
struct literal_clip {
    std::vector<std::string> qualifier_names;
    std::vector<std::string> qualifier_categories;
    std::vector<std::string> attribute_names;
    std::vector<std::string> attribute_categories;
    std::string note;
    std::string row_name;  // empty: no row, or one without a name
    std::string row_category;
    int stars = 0;
};

inline std::string replace_all(std::string text, const std::string& old, const std::string& by) {
    for (std::size_t at = text.find(old); at != std::string::npos; at = text.find(old, at + by.size())) {
        text.replace(at, old.size(), by);
    }
    return text;
}

inline bool literal_is_stars(const std::string& text) {
    return replace_all(text, "✭", "").empty();
}

inline std::string literal_normalised(std::string text, bool for_filter) {
    text = replace_all(text, "\u201C", "\"");
    text = replace_all(text, "\u201D", "\"");
    text = replace_all(text, "[RO]", "[RN]");
    text = replace_all(text, "\r", " ");
    text = replace_all(text, "\n", " ");
    if (for_filter) text = replace_all(text, "\u2028", " ");
    const bool is_plain = text.find('"') == std::string::npos && text.find('(') == std::string::npos &&
                          text.find(')') == std::string::npos;
    if (for_filter && !text.empty() && is_plain) {
        const std::string packed = replace_all(replace_all(text, " ", ""), "*", "");
        if (literal_is_stars(packed)) {
            text = "\"" + packed + "*\"";
        } else {
            const std::string p = "\"*" + replace_all(text, "*", "") + "*\"";
            text = "[QN]" + p + " | [QC]" + p + " | [AC]" + p + " | [AN]" + p + " | [RN]" + p + " | [NT]" + p;
        }
    }
    if (!text.empty() && (text[0] == '!' || text[0] == '&' || text[0] == '|')) text = " " + text;
    return replace_all(replace_all(text, "\n", ""), "\r", "");
}

// The characters of UTF-8; a byte that belongs to none is one of its own.
inline std::vector<std::string> literal_characters(const std::string& text) {
    std::vector<std::string> characters;
    for (std::size_t at = 0; at < text.size(); at += characters.back().size()) {
        const auto byte = [&](std::size_t n) -> unsigned {
            return at + n < text.size() ? static_cast<unsigned char>(text[at + n]) : 0;
        };
        const auto follows = [&](std::size_t n) { return byte(n) >= 0x80 && byte(n) < 0xC0; };
        std::size_t size = 1;
        if (byte(0) >= 0xC0 && byte(0) < 0xE0 && follows(1)) {
            const unsigned code = (byte(0) - 0xC0) * 64 + (byte(1) - 0x80);
            if (code >= 0x80) size = 2;
        } else if (byte(0) >= 0xE0 && byte(0) < 0xF0 && follows(1) && follows(2)) {
            const unsigned code = (byte(0) - 0xE0) * 4096 + (byte(1) - 0x80) * 64 + (byte(2) - 0x80);
            if (code >= 0x800 && (code < 0xD800 || code > 0xDFFF)) size = 3;
        } else if (byte(0) >= 0xF0 && byte(0) < 0xF8 && follows(1) && follows(2) && follows(3)) {
            const unsigned code = (byte(0) - 0xF0) * 262144 + (byte(1) - 0x80) * 4096 +
                                  (byte(2) - 0x80) * 64 + (byte(3) - 0x80);
            if (code >= 0x10000 && code <= 0x10FFFF) size = 4;
        }
        characters.push_back(text.substr(at, size));
    }
    return characters;
}

// One formula, read pass by pass.
class literal_formula {
  public:
    literal_formula(const std::string& typed, bool for_filter) : text(literal_normalised(typed, for_filter)) {
        make_characters();
        join_quotes();
        for (const auto& [spelling, type] :
             {std::pair{"||", "OR"}, {"&&", "AND"}, {"!!", "NOT"}, {"|", "OR"}, {"&", "AND"}, {"!", "NOT"}}) {
            join_operators(spelling, type);
        }
        join_square_brackets();
        hand_codes_on();
        for (auto& token : tokens) {
            if (token.type == "CHAR" && token.chars == "(") token.type = "BRACKET_LEFT";
            if (token.type == "CHAR" && token.chars == ")") token.type = "BRACKET_RIGHT";
        }
        for (auto& token : tokens) take_stars(token);
        for (auto& token : tokens) {
            if (token.type == "CHAR" && token.chars == " ") token.type = "EMPTY";
        }
        put_operator_in_front();
        std::erase_if(tokens, [](const auto& token) { return token.type == "EMPTY"; });
        for (std::size_t place = 0; place < tokens.size(); ++place) {
            tokens[place].position = static_cast<int>(place);
        }
        check();
        prepare();
        if (for_filter) build_tree();
    }

    // Marks the words, gives every node its result, and returns that of the top node.
    int evaluate(const literal_clip& clip) {
        for (auto& token : tokens) {
            token.mark = 0;
            if (token.type != "WORDS") continue;
            for (const auto& code : token.codes) token.mark = matches(token, code, clip) ? 1 : -1;
        }
        for (auto& node : flat) node->result = 0;
        for (int level = lowest_level; level >= 0; --level) {
            for (auto& node : flat) {
                if (node->level == level && node->parent->result == 0) evaluate_node(*node->parent);
            }
        }
        return flat.front()->result;
    }

    std::string text;
    std::vector<literal_token> tokens;
    std::string errors;
    bool uses_qn = false, uses_qc = false, uses_an = false, uses_ac = false, uses_nt = false;
    std::vector<std::shared_ptr<literal_node>> flat;  // level by level
    int lowest_level = -1;

  private:
    void make_characters() {
        for (const auto& character : literal_characters(text)) {
            literal_token token;
            token.chars = token.typed = character;
            token.start = tokens.size();
            tokens.push_back(token);
        }
    }

    std::size_t next_char(std::size_t from, const std::string& chars) const {
        while (from < tokens.size() && !(tokens[from].type == "CHAR" && tokens[from].chars == chars)) ++from;
        return from;
    }

    void join_quotes() {
        for (std::size_t open = next_char(0, "\""); open < tokens.size();) {
            const std::size_t close = next_char(open + 1, "\"");
            if (close == tokens.size()) return;
            join(open, close, "WORDS");
            open = next_char(close + 1, "\"");
        }
    }

    // The first of the tokens becomes one of all between it and the last.
    void join(std::size_t open, std::size_t close, const char* type) {
        std::string between;
        for (std::size_t place = open + 1; place < close; ++place) between += tokens[place].typed;
        for (std::size_t place = open; place <= close; ++place) tokens[place].type = "EMPTY";
        tokens[open].type = type;
        tokens[open].chars = between;
        tokens[open].length = close - open + 1;
    }

    void join_operators(const std::string& spelling, const char* type) {
        for (std::size_t place = 0; place + spelling.size() <= tokens.size(); ++place) {
            bool holds = true;
            for (std::size_t n = 0; n < spelling.size(); ++n) {
                const auto& token = tokens[place + n];
                holds = holds && token.type == "CHAR" && token.chars == spelling.substr(n, 1);
            }
            if (!holds) continue;
            tokens[place].type = type;
            tokens[place].length = spelling.size();
            for (std::size_t n = 1; n < spelling.size(); ++n) {
                tokens[place + n].type = "EMPTY";
                tokens[place + n].chars.clear();
            }
        }
    }

    void join_square_brackets() {
        for (std::size_t open = next_char(0, "["); open < tokens.size();) {
            const std::size_t close = next_char(open + 1, "]");
            if (close == tokens.size()) return;
            join(open, close, "IDENTIFIERS");
            open = next_char(close + 1, "[");
        }
    }

    void hand_codes_on() {
        for (std::size_t place = 0; place < tokens.size(); ++place) {
            if (tokens[place].type != "IDENTIFIERS") continue;
            std::vector<std::string> codes;
            std::string rest = replace_all(tokens[place].chars, " ", "");
            for (std::size_t comma = rest.find(','); comma != std::string::npos; comma = rest.find(',')) {
                codes.push_back(rest.substr(0, comma));
                rest = rest.substr(comma + 1);
            }
            codes.push_back(rest);
            tokens[place].type = "EMPTY";
            for (std::size_t word = place + 1; word < tokens.size(); ++word) {
                if (tokens[word].type != "WORDS") continue;
                tokens[word].codes = codes;
                break;
            }
        }
    }

    static void take_stars(literal_token& token) {
        if (token.type != "WORDS") return;
        bool behind = false;
        if (!token.chars.empty() && token.chars[token.chars.size() - 1] == '*') {
            token.chars = token.chars.substr(0, token.chars.size() - 1);
            token.mode = "MATCH_PREFIX";
            behind = true;
        }
        if (!token.chars.empty() && token.chars[0] == '*') {
            token.chars = token.chars.substr(1);
            token.mode = behind ? "MATCH_ANYWHERE" : "MATCH_SUFFIX";
        }
    }

    static bool is_operator(const literal_token& token) {
        return token.type == "OR" || token.type == "AND" || token.type == "NOT";
    }

    void put_operator_in_front() {
        if (!tokens.empty() && is_operator(tokens[0])) return;
        literal_token in_front;
        in_front.type = "OR";
        in_front.length = 0;
        tokens.insert(tokens.begin(), in_front);
    }

    void add_error(const std::string& message) {
        if (!errors.empty()) errors += ", ";
        errors += message;
    }

    long count(char letter) const { return std::count(text.begin(), text.end(), letter); }

    bool is_out_of_order(char left, char right) const {
        long depth = 0;
        for (const char letter : text) {
            if (letter == left) ++depth;
            if (letter == right) --depth;
            if (depth < 0) return true;
        }
        return false;
    }

    void check() {
        bool invalid = false, holds_operator = false, unrecognised = false;
        const std::vector<std::string> known{"QN", "QC", "AN", "AC", "NT", "RN", "RC"};
        for (const auto& token : tokens) {
            unrecognised = unrecognised || token.type == "CHAR";
            if (token.type != "WORDS") continue;
            for (const auto& code : token.codes) {
                invalid = invalid || std::find(known.begin(), known.end(), code) == known.end();
            }
            for (const char* spelling : {" || ", " && ", " !! "}) {
                holds_operator = holds_operator || token.chars.find(spelling) != std::string::npos;
            }
        }
        if (count('"') % 2 != 0) add_error("Quotation marks");
        if (count('(') != count(')')) add_error("Unbalanced brackets");
        if (count('[') != count(']')) add_error("Unbalanced square brackets");
        if (is_out_of_order('(', ')')) add_error("Brackets out of order");
        if (is_out_of_order('[', ']')) add_error("Square brackets out of order");
        if (invalid) add_error("Invalid identifier");
        if (holds_operator) add_error("Operator inside a word");
        if (unrecognised) add_error("Unrecognised character");
    }

    void prepare() {
        for (auto& token : tokens) {
            if (token.type != "WORDS") continue;
            for (const auto& code : token.codes) {
                uses_qn = uses_qn || code == "QN";
                uses_qc = uses_qc || code == "QC";
                uses_an = uses_an || code == "AN";
                uses_ac = uses_ac || code == "AC";
                uses_nt = uses_nt || code == "NT";
            }
            if (!token.chars.empty() && literal_is_stars(token.chars)) token.codes.push_back("STAR");
            if (token.codes.empty()) token.codes.push_back("QN");
        }
    }

    std::shared_ptr<literal_node> add_child(literal_node& parent, bool is_group) {
        auto child = std::make_shared<literal_node>();
        child->level = parent.level + 1;
        child->parent = &parent;
        child->is_group = is_group;
        parent.children.push_back(child);
        return child;
    }

    void split(literal_node& node) {
        for (std::size_t n = 0; n < node.tokens.size(); ++n) {
            if (tokens[node.tokens[n]].type != "BRACKET_LEFT") {
                add_child(node, false)->tokens = {node.tokens[n]};
                continue;
            }
            const auto group = add_child(node, true);
            int depth = 1;
            for (++n; n < node.tokens.size(); ++n) {
                if (tokens[node.tokens[n]].type == "BRACKET_LEFT") ++depth;
                if (tokens[node.tokens[n]].type == "BRACKET_RIGHT") --depth;
                if (depth == 0) break;
                group->tokens.push_back(node.tokens[n]);
            }
        }
    }

    void build_tree() {
        flat.push_back(std::make_shared<literal_node>());
        for (std::size_t place = 0; place < tokens.size(); ++place) flat[0]->tokens.push_back(place);
        for (std::size_t n = 0; n < flat.size(); ++n) {
            const auto node = flat[n];
            if (!node->is_group) continue;
            split(*node);
            flat.insert(flat.end(), node->children.begin(), node->children.end());
            lowest_level = std::max(lowest_level, flat.back()->level);
        }
    }

    static bool matches_value(const std::string& value, const std::string& pattern, const std::string& mode) {
        if (pattern.empty()) return false;
        if (mode == "MATCH_ALL") return value == pattern;
        if (mode == "MATCH_ANYWHERE") return value.find(pattern) != std::string::npos;
        if (value.size() < pattern.size()) return false;
        const std::size_t from = mode == "MATCH_PREFIX" ? 0 : value.size() - pattern.size();
        return value.substr(from, pattern.size()) == pattern;
    }

    static bool matches(const literal_token& word, const std::string& code, const literal_clip& clip) {
        std::vector<std::string> values;
        if (code == "QN") values = clip.qualifier_names;
        if (code == "QC") values = clip.qualifier_categories;
        if (code == "AN") values = clip.attribute_names;
        if (code == "AC") values = clip.attribute_categories;
        if (code == "NT") values = {clip.note};
        if (code == "RN") values = {clip.row_name};
        if (code == "RC") values = {clip.row_category};
        if (code == "STAR") {
            values.emplace_back();
            for (int star = 0; star < clip.stars; ++star) values.back() += "✭";
        }
        for (const auto& value : values) {
            if (!value.empty() && matches_value(value, word.chars, word.mode)) return true;
        }
        return false;
    }

    void evaluate_node(literal_node& node) {
        const auto& first = node.children.front()->tokens;
        bool value = !first.empty() && tokens[first.front()].type == "NOT";
        std::string pending = "OR";
        const auto add_term = [&](bool term) {
            if (pending == "OR") value = value || term;
            if (pending == "AND") value = value && term;
            if (pending == "NOT") value = value && !term;
        };
        for (const auto& child : node.children) {
            if (child->result != 0) {
                add_term(child->result == 1);
                continue;
            }
            for (const std::size_t place : child->tokens) {
                if (tokens[place].type == "WORDS") add_term(tokens[place].mark == 1);
                if (is_operator(tokens[place])) pending = tokens[place].type;
            }
        }
        node.result = value ? 1 : -1;
    }
};

// Random texts made of the language's own pieces, the same ones for one seed. Most have something wrong; of
// `well_formed` ones most have not.
class random_formulas {
  public:
    explicit random_formulas(unsigned seed) : random_(seed) {}

    std::string any(std::size_t most_pieces = 14) {
        static const std::vector<std::string> pieces{
            "\"",     "\"",         "\"a\"", "\"*a\"",   "\"a*\"",  "\"*ab*\"", "\"**\"", "|",    "||",
            "&",      "&&",         "!",     "!!",       "(",       ")",        "[",      "]",    "[RN]",
            "[RO]",   "[QN,RN]",    "[QC]",  "[AN, AC]", "[NT]",    "[RC]",     "[STAR]", "[]",   ",",
            " ",      "  ",         "*",     "✭",        "\"✭✭*\"", "a",        "ab",     "é",    "\u201C",
            "\u201D", "\u2028",     "\n",    "\r",       "\t",      "\xE2",     "\x80",   " || ", "RN",
            "\"b\"",  "\"a || b\"", "()",    "(\"a\")",  "(!",      "\"\""};
        std::string text;
        for (std::size_t n = pick(most_pieces + 1); n > 0; --n) text += pieces[pick(pieces.size())];
        return text;
    }

    std::string well_formed(const std::vector<std::string>& words) { return group(words, 3); }

    int below(int count) { return static_cast<int>(pick(static_cast<std::size_t>(count))); }

  private:
    std::size_t pick(std::size_t count) { return random_() % count; }

    std::string group(const std::vector<std::string>& words, int depth) {
        static const std::vector<std::string> operators{" & ", " | ", " ! ", "&&", "||", "!!", " ", " & ! "};
        std::string text = below(4) == 0 ? "!" : "";
        for (int n = 1 + below(4); n > 0; --n) {
            text += depth > 0 && below(3) == 0 ? "(" + (below(12) == 0 ? "" : group(words, depth - 1)) + ")"
                                               : word(words);
            if (n > 1) text += operators[pick(operators.size())];
        }
        return text;
    }

    std::string word(const std::vector<std::string>& words) {
        static const std::vector<std::string> codes{"",     "",     "[QN]", "[QC]",    "[AN]",    "[AC]",
                                                    "[NT]", "[RN]", "[RC]", "[RN,QN]", "[QN, RC]"};
        const std::string front = below(3) == 0 ? "*" : "";
        const std::string behind = below(3) == 0 ? "*" : "";
        return codes[pick(codes.size())] + "\"" + front + words[pick(words.size())] + behind + "\"";
    }

    std::mt19937 random_;
};

}  // namespace vistels::testing
