// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/json_cursor.h"

#include <simdjson.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <utility>

#include "util/stored_form_failures.h"
#include "util/text_forms.h"
#include "util/text_words.h"

namespace vistels {

namespace {

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

bool is_digit(char character) {
    return character >= '0' && character <= '9';
}

// The first '"', '\\' or control character, or `end`.
const char* text_end(const char* at, const char* end) {
    const auto equal_to = [](std::uint64_t word, char byte) {
        const auto differing = word ^ text_word_ones * static_cast<unsigned char>(byte);
        return (differing - text_word_ones) & ~differing;
    };
    while (static_cast<std::size_t>(end - at) >= text_word_bytes) {
        const std::uint64_t word = text_word(at);
        const std::uint64_t control = (word - text_word_ones * 0x20) & ~word;
        const auto marks = (control | equal_to(word, '"') | equal_to(word, '\\')) & text_word_tops;
        if (marks != 0) return at + first_marked(marks);
        at += text_word_bytes;
    }
    while (at != end && *at != '"' && *at != '\\' && static_cast<unsigned char>(*at) >= 0x20) ++at;
    return at;
}

constexpr std::uint32_t no_code = std::numeric_limits<std::uint32_t>::max();

// The number that four hexadecimal digits stand for.
std::uint32_t code_unit(std::string_view digits) {
    if (digits.size() != 4) return no_code;
    std::uint32_t code = 0;
    for (const char digit : digits) {
        const char small = static_cast<char>(digit | 0x20);
        const bool is_letter = small >= 'a' && small <= 'f';
        if (!is_letter && !is_digit(digit)) return no_code;
        code = code << 4U | static_cast<std::uint32_t>(is_letter ? small - 'a' + 10 : digit - '0');
    }
    return code;
}

// The character that is escaped at the start of `text`, which it is passed over in. Halves of pairs alone are
// no character.
std::uint32_t escaped_code(std::string_view& text) {
    const auto take = [&text] {
        const auto code = text.starts_with("\\u") ? code_unit(text.substr(2, 4)) : no_code;
        if (code != no_code) text.remove_prefix(6);
        return code;
    };
    const auto first = take();
    if (first == no_code || first < 0xD800 || first > 0xDFFF) return first;
    const auto second = first < 0xDC00 ? take() : no_code;
    if (second == no_code || second < 0xDC00 || second > 0xDFFF) return no_code;
    return 0x10000 + ((first - 0xD800) << 10U) + (second - 0xDC00);
}

std::size_t put_utf8(char* to, std::uint32_t code) {
    const auto following = [code](unsigned shift) {
        return static_cast<char>(0x80U | (code >> shift & 0x3FU));
    };
    if (code < 0x80) {
        to[0] = static_cast<char>(code);
        return 1;
    }
    if (code < 0x800) {
        to[0] = static_cast<char>(0xC0U | code >> 6U);
        to[1] = following(0);
        return 2;
    }
    if (code < 0x10000) {
        to[0] = static_cast<char>(0xE0U | code >> 12U);
        to[1] = following(6);
        to[2] = following(0);
        return 3;
    }
    to[0] = static_cast<char>(0xF0U | code >> 18U);
    to[1] = following(12);
    to[2] = following(6);
    to[3] = following(0);
    return 4;
}

// Undoes the escape at the start of `text`, which it is passed over in. Returns how many bytes were put at
// `to` (fewer than the escape has), or 0.
std::size_t undo_escape(std::string_view& text, char* to) {
    constexpr std::string_view names = "\"\\/bfnrt";
    constexpr std::string_view characters = "\"\\/\b\f\n\r\t";
    const auto known = text.size() < 2 ? std::string_view::npos : names.find(text[1]);
    if (known != std::string_view::npos) {
        text.remove_prefix(2);
        *to = characters[known];
        return 1;
    }
    const auto code = escaped_code(text);
    return code == no_code ? 0 : put_utf8(to, code);
}

// Whether a number that no double is near is too large rather than too small.
bool is_beyond_doubles(std::string_view text) {
    const auto mark = std::min(text.find_first_of("eE"), text.size());
    const auto digits = text.substr(0, mark);
    const auto point = std::min(digits.find('.'), digits.size());
    const auto first = std::min(digits.find_first_of("123456789"), digits.size());
    const auto places = static_cast<double>(point) - static_cast<double>(first);
    const auto exponent = text.substr(std::min(mark + 1, text.size()));
    const double endless = exponent.starts_with('-') ? -HUGE_VAL : HUGE_VAL;
    return places + number_from_text(exponent).value_or(exponent.empty() ? 0 : endless) > 0;
}

}  // namespace

json_cursor::json_cursor(std::string_view bytes)
    : begin_(bytes.data()), at_(bytes.data()), end_(bytes.data() + bytes.size()) {
    if (bytes.starts_with(byte_order_mark)) at_ += byte_order_mark.size();
    if (!simdjson::validate_utf8(bytes.data(), bytes.size())) stop(text_is_not_json());
}

stored_view json_cursor::stop(failure fault) {
    if (!fault_) fault_ = std::move(fault);
    at_ = end_;
    items_.clear();
    members_.clear();
    return {};
}

// The first character that is no blank; 0 at the end.
char json_cursor::ahead() {
    while (at_ != end_ && (*at_ == ' ' || *at_ == '\n' || *at_ == '\t' || *at_ == '\r')) ++at_;
    return at_ == end_ ? '\0' : *at_;
}

bool json_cursor::finish() {
    ahead();
    if (depth_ != 0 || at_ != end_) stop(text_is_not_json());
    return !fault_;
}

stored_view::form json_cursor::next_form() {
    using form = stored_view::form;
    const char first = ahead();
    switch (first) {
        case '{':
            return form::dictionary;
        case '[':
            return form::array;
        case '"':
            return form::text;
        case 't':
        case 'f':
            return form::boolean;
        default:
            return first == '-' || is_digit(first) ? form::real : form::null;
    }
}

bool json_cursor::open(bool dictionary) {
    if (depth_ == static_cast<std::size_t>(deepest_nesting)) {
        stop(nested_too_deep(deepest_nesting));
        return false;
    }
    ++at_;
    dictionaries_[depth_++] = dictionary;
    is_first_ = true;
    return true;
}

bool json_cursor::enter() {
    const auto next = next_form();
    if (next == stored_view::form::dictionary || next == stored_view::form::array) {
        return open(next == stored_view::form::dictionary);
    }
    stop(text_is_not_json());
    return false;
}

// Whether another part of the innermost array or object follows; if not, it has been left.
bool json_cursor::part_follows(char close) {
    const bool is_object = close == '}';
    if (depth_ == 0 || dictionaries_[depth_ - 1] != is_object) {
        stop(text_is_not_json());
        return false;
    }
    const char next = ahead();
    const bool was_first = std::exchange(is_first_, false);
    if (next == close) {
        ++at_;
        --depth_;
        return false;
    }
    if (was_first) return true;
    if (next != ',') {
        stop(text_is_not_json());
        return false;
    }
    ++at_;
    return true;
}

bool json_cursor::next_item() {
    return part_follows(']');
}

bool json_cursor::read_key(std::string_view& key, stored_arena* arena) {
    if (!part_follows('}')) return false;
    if (ahead() != '"' || !read_text(key, arena) || ahead() != ':') {
        stop(text_is_not_json());
        return false;
    }
    ++at_;
    return true;
}

std::optional<std::string_view> json_cursor::next_key(stored_arena& arena) {
    std::string_view key;
    if (!read_key(key, &arena)) return std::nullopt;
    return key;
}

// The text that begins with the '"' ahead; as it stands, when it has no escapes.
bool json_cursor::read_text(std::string_view& text, stored_arena* arena) {
    const char* const start = at_ + 1;
    const char* const stop_at = text_end(start, end_);
    if (stop_at != end_ && *stop_at == '\\') return read_escaped(start, text, arena);
    if (stop_at == end_ || *stop_at != '"') {
        stop(text_is_not_json());
        return false;
    }
    text = {start, static_cast<std::size_t>(stop_at - start)};
    at_ = stop_at + 1;
    return true;
}

// Without an arena the text is looked at and not kept.
bool json_cursor::read_escaped(const char* start, std::string_view& text, stored_arena* arena) {
    const char* close = text_end(start, end_);
    while (close != end_ && *close == '\\') {
        close = text_end(close + std::min<std::ptrdiff_t>(2, end_ - close), end_);
    }
    if (close == end_ || *close != '"') {
        stop(text_is_not_json());
        return false;
    }
    std::string_view rest(start, static_cast<std::size_t>(close - start));
    const auto room = arena ? arena->room_for_text(rest.size()) : std::span<char>();
    std::size_t kept = 0;
    while (!rest.empty()) {
        const auto plain = std::min(rest.find('\\'), rest.size());
        if (arena && plain > 0) std::memcpy(room.data() + kept, rest.data(), plain);
        kept += plain;
        rest.remove_prefix(plain);
        if (rest.empty()) break;
        std::array<char, 4> unkept;
        const auto put = undo_escape(rest, arena ? room.data() + kept : unkept.data());
        if (put == 0) {
            stop(text_is_not_json());
            return false;
        }
        kept += put;
    }
    text = arena ? std::string_view(room.data(), kept) : std::string_view();
    at_ = close + 1;
    return true;
}

stored_view json_cursor::read_array(stored_arena* arena) {
    const std::size_t first = items_.size();
    while (next_item()) {
        const auto item = read_value(arena);
        if (arena && !fault_) items_.push(item);
    }
    return !fault_ && arena ? stored_view(items_.take(first, *arena)) : stored_view();
}

stored_view json_cursor::read_dictionary(stored_arena* arena) {
    const std::size_t first = members_.size();
    std::string_view key;
    while (read_key(key, arena)) {
        const auto value = read_value(arena);
        if (arena && !fault_) members_.push({key, value});
    }
    return !fault_ && arena ? stored_view(members_.take(first, *arena)) : stored_view();
}

stored_view json_cursor::read_word(std::string_view word, stored_view value) {
    if (!std::string_view(at_, static_cast<std::size_t>(end_ - at_)).starts_with(word))
        return stop(text_is_not_json());
    at_ += word.size();
    return value;
}

stored_view json_cursor::read_number() {
    const char* const start = at_;
    const char* at = start;
    const auto pass_digits = [&] {
        const char* const from = at;
        while (at != end_ && is_digit(*at)) ++at;
        return at - from;
    };
    const auto is_next = [&](char one, char other) { return at != end_ && (*at == one || *at == other); };
    if (is_next('-', '-')) ++at;
    const char* const digits = at;
    const auto count = pass_digits();
    bool right = count > 0 && (*digits != '0' || count == 1);
    bool whole = true;
    if (right && is_next('.', '.')) {
        ++at;
        whole = false;
        right = pass_digits() > 0;
    }
    if (right && is_next('e', 'E')) {
        ++at;
        whole = false;
        if (is_next('+', '-')) ++at;
        right = pass_digits() > 0;
    }
    if (!right) return stop(text_is_not_json());
    at_ = at;
    const std::string_view text(start, static_cast<std::size_t>(at - start));
    if (whole) {
        if (const auto number = integer_from_text(text)) return stored_view(*number);
        // Up to 64 bits without a sign.
        constexpr std::string_view largest = "18446744073709551615";
        const bool fits = text.size() < largest.size() || (text.size() == largest.size() && text <= largest);
        if (*start == '-' || !fits) return stop(text_is_not_json());
    }
    if (const auto number = number_from_text(text)) return stored_view(*number);
    if (is_beyond_doubles(text.substr(*start == '-' ? 1 : 0))) return stop(text_is_not_json());
    return stored_view(*start == '-' ? -0.0 : 0.0);
}

stored_view json_cursor::read_value(stored_arena* arena) {
    std::string_view text;
    switch (ahead()) {
        case '{':
            return open(true) ? read_dictionary(arena) : stored_view();
        case '[':
            return open(false) ? read_array(arena) : stored_view();
        case '"':
            return read_text(text, arena) ? stored_view(text) : stored_view();
        case 't':
            return read_word("true", stored_view(true));
        case 'f':
            return read_word("false", stored_view(false));
        case 'n':
            return read_word("null", stored_view());
        default:
            return read_number();
    }
}

stored_view json_cursor::read(stored_arena& arena) {
    return read_value(&arena);
}

void json_cursor::skip() {
    read_value(nullptr);
}

}  // namespace vistels
