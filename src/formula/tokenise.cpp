// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/tokenise.h"

#include <algorithm>
#include <utility>

#include "formula/code_points.h"

namespace vistels {

namespace {

constexpr std::size_t npos = std::string_view::npos;

// The codes between square brackets; empty pieces are codes, too.
std::vector<std::string> codes_in(std::string_view text) {
    std::vector<std::string> codes(1);
    for (const char letter : text) {
        if (letter == ',') {
            codes.emplace_back();
        } else if (letter != ' ') {
            codes.back() += letter;
        }
    }
    return codes;
}

// One star at each end says how the word is compared.
void take_wild_cards(token_ITEM& word) {
    const bool behind = word.chars.ends_with('*');
    if (behind) {
        word.chars.pop_back();
        word.wild_card_search = wild_card::MATCH_PREFIX;
    }
    if (word.chars.starts_with('*')) {
        word.chars.erase(word.chars.begin());
        word.wild_card_search = behind ? wild_card::MATCH_ANYWHERE : wild_card::MATCH_SUFFIX;
    }
}

token_type operator_type(char letter) {
    if (letter == '|') return token_type::OR;
    return letter == '&' ? token_type::AND : token_type::NOT;
}

// Reads the text once, from the left. Quoted words win over everything else, then pairs of the same operator
// character over single ones, then square brackets over what is left between them.
class token_reader {
  public:
    explicit token_reader(std::string_view text) : text_(text), unpaired_quote_(unpaired_quote(text)) {}

    std::vector<token_ITEM> read() {
        const bool begins_with_operator =
            text_.starts_with('|') || text_.starts_with('&') || text_.starts_with('!');
        if (!begins_with_operator) tokens_.emplace_back().type = token_type::OR;
        while (at_ < text_.size()) read_one();
        for (std::size_t number = 0; number < tokens_.size(); ++number) {
            tokens_[number].token_idx0_position = static_cast<int>(number);
        }
        return std::move(tokens_);
    }

  private:
    void read_one() {
        switch (const char letter = text_[at_]) {
            case ' ':
                ++at_;
                ++place_;
                break;
            case '"':
                if (at_ == unpaired_quote_) {
                    add(token_type::CHAR, 1);
                } else {
                    read_word();
                }
                break;
            case '|':
            case '&':
            case '!': {
                const bool is_double = at_ + 1 < text_.size() && text_[at_ + 1] == letter;
                add(operator_type(letter), is_double ? 2 : 1).chars.resize(1);
                break;
            }
            case '(':
                add(token_type::BRACKET_LEFT, 1);
                break;
            case ')':
                add(token_type::BRACKET_RIGHT, 1);
                break;
            case '[':
                read_codes();
                break;
            default:
                add(token_type::CHAR, code_point_size(text_, at_));
        }
    }

    // A token of the next `size` bytes; of a character or of single-byte ones.
    token_ITEM& add(token_type type, std::size_t size) {
        auto& token = tokens_.emplace_back();
        token.type = type;
        token.chars = text_.substr(at_, size);
        token.place = {place_, type == token_type::CHAR ? 1 : size};
        at_ += size;
        place_ += token.place.length;
        return token;
    }

    void read_word() {
        const auto chars = text_.substr(at_ + 1, text_.find('"', at_ + 1) - at_ - 1);
        auto& word = tokens_.emplace_back();
        word.type = token_type::WORDS;
        word.chars = chars;
        word.place = {place_, count_code_points(chars) + 2};
        take_wild_cards(word);
        word.ray_word_IDENTIFIERS = std::exchange(waiting_codes_, {});
        word.identifiers_place = std::exchange(waiting_codes_place_, {});
        at_ += chars.size() + 2;
        place_ += word.place.length;
    }

    void read_codes() {
        const std::size_t end = next_right_square();
        if (end == npos) {
            add(token_type::CHAR, 1);
            return;
        }
        const auto codes = text_.substr(at_ + 1, end - at_ - 1);
        waiting_codes_ = codes_in(codes);
        waiting_codes_place_ = {place_, count_code_points(codes) + 2};
        at_ = end + 1;
        place_ += waiting_codes_place_.length;
    }

    // The next "]" outside quotes. Once there is none, there is none for any later "[".
    std::size_t next_right_square() {
        std::size_t found = ends_of_codes_left_ ? at_ : npos;
        while (found != npos && text_[found] != ']') {
            const bool opens_word = text_[found] == '"' && found != unpaired_quote_;
            if (opens_word) found = text_.find('"', found + 1);
            found = text_.find_first_of("]\"", found + 1);
        }
        ends_of_codes_left_ = found != npos;
        return found;
    }

    std::string_view text_;
    std::size_t unpaired_quote_;
    std::size_t at_ = 0;     // byte
    std::size_t place_ = 0;  // character
    bool ends_of_codes_left_ = true;
    std::vector<std::string> waiting_codes_;  // for the next word
    text_span waiting_codes_place_;
    std::vector<token_ITEM> tokens_;
};

}  // namespace

std::vector<token_ITEM> tokenise(std::string_view normalised) {
    return token_reader(normalised).read();
}

bool is_valid_word(const token_ITEM& word) {
    static constexpr std::string_view valid[] = {"QN", "QC", "AN", "AC", "NT", "RN", "RC"};
    return std::ranges::all_of(word.ray_word_IDENTIFIERS, [](const std::string& code) {
        return std::ranges::find(valid, code) != std::end(valid);
    });
}

std::size_t unpaired_quote(std::string_view normalised) {
    return std::ranges::count(normalised, '"') % 2 == 1 ? normalised.rfind('"') : npos;
}

}  // namespace vistels
