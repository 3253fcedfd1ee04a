// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/token_ITEM.h"

namespace vistels {

const char* token_type_text(token_type type) {
    switch (type) {
        case token_type::CHAR:
            return "CHAR";
        case token_type::WORDS:
            return "WORDS";
        case token_type::IDENTIFIERS:
            return "IDENTIFIERS";
        case token_type::OR:
            return "OR";
        case token_type::AND:
            return "AND";
        case token_type::NOT:
            return "NOT";
        case token_type::BRACKET_LEFT:
            return "BRACKET_LEFT";
        case token_type::BRACKET_RIGHT:
            return "BRACKET_RIGHT";
        case token_type::EMPTY:
            break;
    }
    return "EMPTY";
}

const char* wild_card_text(wild_card mode) {
    switch (mode) {
        case wild_card::MATCH_PREFIX:
            return "MATCH_PREFIX";
        case wild_card::MATCH_SUFFIX:
            return "MATCH_SUFFIX";
        case wild_card::MATCH_ANYWHERE:
            return "MATCH_ANYWHERE";
        case wild_card::MATCH_ALL:
            break;
    }
    return "MATCH_ALL";
}

}  // namespace vistels
