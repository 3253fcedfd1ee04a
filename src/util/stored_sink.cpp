// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/stored_sink.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <variant>

#include "util/property_list.h"
#include "util/text_forms.h"
#include "util/text_words.h"

namespace vistels {

namespace {

// A block that is kept is copied to the rest, so it stays small. One that is handed on is of this size to the
// byte: a file takes whole pages with less ado than pages in two parts, and pages in groups of this size cost
// the kernel least; it hands out larger groups from memory that nobody has touched for long.
constexpr std::size_t kept_block_bytes = std::size_t{1} << 14;
constexpr std::size_t handed_block_bytes = std::size_t{1} << 16;
// Copying goes by fixed sizes and may write up to this many bytes past its end.
constexpr std::size_t slack = 16;
constexpr std::size_t number_bytes = 32;  // room for any number

// Not 0 when one of the eight bytes has to be looked at: markup, a control character or beyond ASCII.
constexpr std::uint64_t odd_bytes(std::uint64_t bytes) {
    return markup_in(bytes) | (bytes & text_word_tops);
}

// Copies the text when it needs no escapes, and says whether it did.
bool copy_plain(char* to, std::string_view text) {
    const char* const from = text.data();
    const std::size_t size = text.size();
    const auto copy_word = [&](std::size_t at) {
        std::memcpy(to + at, from + at, text_word_bytes);
        return odd_bytes(text_word(from + at));
    };
    std::uint64_t odd = 0;
    if (size >= text_word_bytes) {
        for (std::size_t at = 0; at + text_word_bytes < size; at += text_word_bytes) odd |= copy_word(at);
        return (odd | copy_word(size - text_word_bytes)) == 0;
    }
    char few[text_word_bytes] = {' ', ' ', ' ', ' ', ' ', ' ', ' ', ' '};
    for (std::size_t at = 0; at < size; ++at) few[at] = from[at];
    std::memcpy(to, few, text_word_bytes);
    return odd_bytes(text_word(few)) == 0;
}

std::string escaped(std::string_view text) {
    std::string to;
    to.reserve(text.size() + text.size() / 8);
    for (;;) {
        const std::size_t special = text.find_first_of("&<>\r");
        append_valid_text(to, text.substr(0, special));
        if (special == std::string_view::npos) return to;
        switch (text[special]) {
            case '&':
                to += "&amp;";
                break;
            case '<':
                to += "&lt;";
                break;
            case '>':
                to += "&gt;";
                break;
            default:
                to += "&#13;";  // a bare one would be read back as a line feed
                break;
        }
        text.remove_prefix(special + 1);
    }
}

}  // namespace

dictionary_sink::dictionary_sink() {
    levels_.push_back({{}, property_dictionary()});
}

void dictionary_sink::add(std::string_view key, property_value value) {
    auto& holder = levels_.back().value;
    if (auto* dictionary = holder.dictionary()) {
        dictionary->add(key, std::move(value));
    } else {
        holder.array()->push_back(std::move(value));
    }
}

void dictionary_sink::put(std::string_view key, bool value) {
    add(key, value);
}
void dictionary_sink::put(std::string_view key, std::int64_t value) {
    add(key, value);
}
void dictionary_sink::put(std::string_view key, double value) {
    add(key, value);
}
void dictionary_sink::put(std::string_view key, std::string_view value) {
    add(key, value);
}
void dictionary_sink::put(std::string_view key, const property_value& value) {
    add(key, value);
}

void dictionary_sink::begin_dictionary(std::string_view key) {
    levels_.push_back({std::string(key), property_dictionary()});
}

void dictionary_sink::begin_array(std::string_view key) {
    levels_.push_back({std::string(key), property_array()});
}

void dictionary_sink::end() {
    level ended = std::move(levels_.back());
    levels_.pop_back();
    add(ended.key, std::move(ended.value));
}

property_dictionary dictionary_sink::take() {
    auto made = std::move(*levels_.front().value.dictionary());
    levels_.assign(1, {{}, property_dictionary()});
    return made;
}

// A tag, with bytes enough behind it to be copied in one size.
struct property_list_sink::line_part {
    template <std::size_t Size>
    constexpr line_part(const char (&text)[Size]) : size(Size - 1) {
        static_assert(Size - 1 <= slack);
        std::copy_n(text, Size - 1, bytes);
    }
    char* copy_to(char* to) const {
        std::memcpy(to, bytes, slack);
        return to + size;
    }
    char bytes[slack]{};
    std::size_t size;
};

property_list_sink::property_list_sink() : property_list_sink(block_taker()) {}

property_list_sink::property_list_sink(block_taker taker)
    : taker_(std::move(taker)), block_(taker_ ? handed_block_bytes + kept_block_bytes : kept_block_bytes) {
    used_ = property_list_head.copy(block_.data(), property_list_head.size());
}

void property_list_sink::hand_on() {
    if (!taker_) {
        bytes_.append(block_.data(), used_);
        used_ = 0;
        return;
    }
    const std::size_t whole = used_ - used_ % handed_block_bytes;
    if (whole == 0) return;
    taker_({block_.data(), whole});
    used_ -= whole;
    std::memmove(block_.data(), block_.data() + whole, used_);
}

// The place of the next byte, with room for that many and the slack.
char* property_list_sink::room(std::size_t bytes) {
    const std::size_t needed = bytes + slack;
    if (needed > block_.size() - used_) hand_on();
    if (needed > block_.size() - used_) block_.resize(used_ + needed);
    return block_.data() + used_;
}

char* property_list_sink::begin_line(char* to) const {
    constexpr std::uint64_t tabs = text_word_ones * '\t';
    for (std::size_t level = 0; level < dictionaries_.size(); level += text_word_bytes) {
        std::memcpy(to + level, &tabs, sizeof tabs);
    }
    return to + dictionaries_.size();
}

// Appends the text, with escapes where it needs them, at `to`, a place in the block that is not yet counted
// as used; afterwards there is room for `bytes_after` more.
char* property_list_sink::put_text(char* to, std::string_view text, std::size_t bytes_after) {
    if (copy_plain(to, text)) return to + text.size();
    used_ = static_cast<std::size_t>(to - block_.data());
    const std::string other = escaped(text);
    to = room(other.size() + bytes_after);
    return to + other.copy(to, other.size());
}

// The key's line, when it is a dictionary that is being written, and the value's line.
void property_list_sink::put_value(std::string_view key, const line_part& open, std::string_view text,
                                   const line_part& close) {
    static constexpr line_part key_open("<key>");
    static constexpr line_part key_close("</key>\n");
    if (begun_) write_begun();
    const std::size_t value_bytes = dictionaries_.size() + open.size + text.size() + close.size + slack;
    char* to = nullptr;
    if (!dictionaries_.empty() && dictionaries_.back()) {
        const std::size_t after_key = key_close.size + value_bytes;
        to = room(dictionaries_.size() + key_open.size + key.size() + after_key);
        to = put_text(key_open.copy_to(begin_line(to)), key, after_key);
        to = key_close.copy_to(to);
    } else {
        to = room(value_bytes);
    }
    to = put_text(open.copy_to(begin_line(to)), text, close.size);
    used_ = static_cast<std::size_t>(close.copy_to(to) - block_.data());
}

void property_list_sink::put(std::string_view key, bool value) {
    static constexpr line_part yes("<true/>\n");
    static constexpr line_part no("<false/>\n");
    static constexpr line_part nothing("");
    put_value(key, value ? yes : no, {}, nothing);
}

void property_list_sink::put(std::string_view key, std::int64_t value) {
    static constexpr line_part open("<integer>");
    static constexpr line_part close("</integer>\n");
    char digits[number_bytes];
    put_value(key, open, {digits, write_integer(digits, value)}, close);
}

void property_list_sink::put(std::string_view key, double value) {
    static constexpr line_part open("<real>");
    static constexpr line_part close("</real>\n");
    char digits[number_bytes];
    put_value(key, open, {digits, write_shortest(digits, value)}, close);
}

void property_list_sink::put(std::string_view key, std::string_view value) {
    static constexpr line_part open("<string>");
    static constexpr line_part close("</string>\n");
    put_value(key, open, value, close);
}

void property_list_sink::put(std::string_view key, const property_value& value) {
    struct putter {
        property_list_sink& sink;
        std::string_view key;
        void operator()(std::monostate) const {}
        void operator()(bool held) const { sink.put(key, held); }
        void operator()(std::int64_t held) const { sink.put(key, held); }
        void operator()(double held) const { sink.put(key, held); }
        void operator()(const std::string& held) const { sink.put(key, std::string_view(held)); }
        void operator()(const property_data& held) const {
            sink.put_value(key, "<data>", base64_text(held.bytes), "</data>\n");
        }
        void operator()(const property_date& held) const {
            sink.put_value(key, "<date>", date_text(held.seconds), "</date>\n");
        }
        void operator()(const property_array& held) const {
            sink.begin_array(key);
            for (const auto& item : held) sink.put({}, item);
            sink.end();
        }
        void operator()(const property_dictionary& held) const {
            sink.begin_dictionary(key);
            for (const auto& entry : held) sink.put(entry.key, entry.value);
            sink.end();
        }
    };
    std::visit(putter{*this, key}, value.get());
}

// An empty array or dictionary is one line, so the line of one that begins waits for what follows. Its key,
// the tabs and the tag's name are written at once.
void property_list_sink::begin(std::string_view key, bool dictionary) {
    static constexpr line_part dict("<dict");
    static constexpr line_part array("<array");
    static constexpr line_part nothing("");
    put_value(key, dictionary ? dict : array, {}, nothing);
    dictionaries_.push_back(dictionary);
    begun_ = true;
}

void property_list_sink::write_begun() {
    static constexpr line_part rest(">\n");
    used_ = static_cast<std::size_t>(rest.copy_to(room(rest.size)) - block_.data());
    begun_ = false;
}

void property_list_sink::begin_dictionary(std::string_view key) {
    begin(key, true);
}

void property_list_sink::begin_array(std::string_view key) {
    begin(key, false);
}

void property_list_sink::end() {
    static constexpr line_part none("/>\n");
    static constexpr line_part dict("</dict>\n");
    static constexpr line_part array("</array>\n");
    const line_part& close = begun_ ? none : dictionaries_.back() ? dict : array;
    dictionaries_.pop_back();
    char* const line = room(dictionaries_.size() + slack);
    used_ = static_cast<std::size_t>(close.copy_to(begun_ ? line : begin_line(line)) - block_.data());
    begun_ = false;
}

std::string_view property_list_sink::last_block() {
    char* const line = room(property_list_foot.size());
    used_ += property_list_foot.copy(line, property_list_foot.size());
    return {block_.data(), used_};
}

void property_list_sink::finish() {
    const auto left = last_block();
    if (taker_) {
        taker_(left);
    } else {
        hand_on();
    }
}

std::string property_list_sink::take() {
    finish();
    std::string taken = std::move(bytes_);
    *this = property_list_sink();
    return taken;
}

}  // namespace vistels
