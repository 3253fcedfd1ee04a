// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/property_list_cursor.h"

#include <simdjson.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <utility>

#include "util/text_forms.h"
#include "util/text_words.h"

namespace vistels {

namespace {

constexpr std::string_view key_open = "<key>";
constexpr std::string_view key_close = "</key>\n";
constexpr std::string_view dict_close = "</dict>\n";
constexpr std::string_view array_close = "</array>\n";
// A line of the list, tabs aside, and the foot after it have at least this many bytes together: what begins a
// line can be compared without looking for the end of the bytes.
constexpr std::size_t shortest_end = 16;

template <std::size_t Size>
bool starts(const char* at, const char (&text)[Size]) {
    static_assert(Size - 1 <= shortest_end);
    return std::memcmp(at, text, Size - 1) == 0;
}

// Whether a text that is UTF-8 holds one of the two characters of it that XML forbids, U+FFFE and U+FFFF.
bool holds_no_character(std::string_view text) {
    for (;;) {
        const auto lead = text.find("\xEF\xBF");
        if (lead == std::string_view::npos) return false;
        if (static_cast<unsigned char>(text[lead + 2]) >= 0xBE) return true;
        text.remove_prefix(lead + 3);
    }
}

struct escape {
    std::string_view text;
    char character;
};
constexpr escape escapes[] = {{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&#13;", '\r'}};

const escape* escape_at(std::string_view text) {
    for (const auto& candidate : escapes) {
        if (text.starts_with(candidate.text)) return &candidate;
    }
    return nullptr;
}

// The first '<', '>', '&' or control character but tab and line feed. There must be a '<' ahead that has
// text_word_bytes after it. Sets `beyond_ascii` when there may be such bytes before.
const char* text_end(const char* at, bool& beyond_ascii) {
    std::uint64_t seen = 0;
    for (;;) {
        const std::uint64_t word = text_word(at);
        seen |= word;
        const std::uint64_t marks = markup_in(word);
        if (marks == 0) {
            at += text_word_bytes;
            continue;
        }
        at += first_marked(marks);
        if (*at != '\n' && *at != '\t') break;
        ++at;
    }
    beyond_ascii = (seen & text_word_tops) != 0;
    return at;
}

// The length of what stands before the value, or 0 when it is nothing usual. Other programs write the same
// shape but for one line, which names the document type.
std::size_t head_length(std::string_view bytes) {
    if (bytes.starts_with(property_list_head)) return property_list_head.size();
    constexpr std::string_view line_open = "<!DOCTYPE plist PUBLIC \"";
    constexpr std::string_view between = "\" \"";
    constexpr std::string_view line_close = "\">\n";
    constexpr std::string_view plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-./: ";
    const auto first_end = property_list_head.find('\n') + 1;
    const auto passes = [&bytes](std::string_view text) {
        if (!bytes.starts_with(text)) return false;
        bytes.remove_prefix(text.size());
        return true;
    };
    const auto whole = bytes.size();
    if (!passes(property_list_head.substr(0, first_end)) || !passes(line_open)) return 0;
    bytes.remove_prefix(std::min(bytes.find_first_not_of(plain), bytes.size()));
    if (!passes(between)) return 0;
    bytes.remove_prefix(std::min(bytes.find_first_not_of(plain), bytes.size()));
    if (!passes(line_close) || !passes(property_list_head.substr(first_end))) return 0;
    return whole - bytes.size();
}

}  // namespace

property_list_cursor::property_list_cursor(std::string_view bytes)
    : begin_(bytes.data()), at_(bytes.data()), end_(bytes.data() + bytes.size()) {
    const auto head = head_length(bytes);
    usual_ = head != 0 && bytes.size() - head >= shortest_end && bytes.ends_with(property_list_foot) &&
             simdjson::validate_utf8(bytes.data(), bytes.size());
    if (usual_) at_ += head;
}

void property_list_cursor::give_up() {
    usual_ = false;
    at_ = end_;
    items_.clear();
    members_.clear();
}

bool property_list_cursor::finish() {
    if (usual_ && (depth_ != 0 || std::string_view(at_, end_) != property_list_foot)) give_up();
    return usual_;
}

// Passes over the tabs of a line. After them there are at least shortest_end bytes.
bool property_list_cursor::begin_line(std::size_t tabs) {
    bool right = usual_ && static_cast<std::size_t>(end_ - at_) >= tabs + shortest_end;
    for (; right && tabs >= text_word_bytes; tabs -= text_word_bytes, at_ += text_word_bytes) {
        right = text_word(at_) == text_word_ones * '\t';
    }
    if (right && tabs > 0) {
        const auto unlike = (text_word(at_) ^ text_word_ones * '\t') << (text_word_bytes - tabs) * 8;
        right = unlike == 0;
        at_ += tabs;
    }
    if (!right) give_up();
    return right;
}

property_list_cursor::tag property_list_cursor::tag_ahead(const char* at) const {
    switch (at[1]) {
        case 's':
            return starts(at, "<string>") ? tag::string : tag::none;
        case 'r':
            return starts(at, "<real>") ? tag::real : tag::none;
        case 'i':
            return starts(at, "<integer>") ? tag::integer : tag::none;
        case 't':
            return starts(at, "<true/>\n") ? tag::yes : tag::none;
        case 'f':
            return starts(at, "<false/>\n") ? tag::no : tag::none;
        case 'a':
            if (starts(at, "<array>\n")) return tag::array;
            return starts(at, "<array/>\n") ? tag::empty_array : tag::none;
        case 'd':
            if (starts(at, "<dict>\n")) return tag::dict;
            if (starts(at, "<dict/>\n")) return tag::empty_dict;
            if (starts(at, "<data>")) return tag::data;
            return starts(at, "<date>") ? tag::date : tag::none;
        default:
            return tag::none;
    }
}

// Passes over the tag that begins a value, and the tabs before it that have not been passed over yet.
property_list_cursor::tag property_list_cursor::begin_value(std::size_t tabs) {
    constexpr unsigned char lengths[] = {0, 8, 9, 6, 8, 9, 6, 6, 7, 8, 8, 9};
    if (in_empty_ || (depth_ == 0 && std::exchange(has_root_, true))) give_up();
    if (!begin_line(tabs)) return tag::none;
    const tag kind = tag_ahead(at_);
    if (kind == tag::none) give_up();
    at_ += lengths[static_cast<std::size_t>(kind)];
    return kind;
}

stored_view::form property_list_cursor::next_form() const {
    using form = stored_view::form;
    constexpr form forms[] = {form::null,       form::text,       form::integer, form::real,
                              form::boolean,    form::boolean,    form::data,    form::date,
                              form::dictionary, form::dictionary, form::array,   form::array};
    if (!usual_ || in_empty_ || static_cast<std::size_t>(end_ - at_) < depth_ + shortest_end)
        return form::null;
    return forms[static_cast<std::size_t>(tag_ahead(at_ + depth_))];
}

// Whether the dictionary or array entered last ends here; then it has been left. If not, all tabs of the line
// but one have been passed over.
bool property_list_cursor::is_at_end(std::string_view close) {
    if (std::exchange(in_empty_, false)) {
        --depth_;
        return true;
    }
    if (!begin_line(depth_ - 1) || *at_ == '\t') return !usual_;
    if (std::memcmp(at_, close.data(), close.size()) != 0) {
        give_up();
        return true;
    }
    at_ += close.size();
    --depth_;
    return true;
}

bool property_list_cursor::open(bool dictionary, bool is_empty) {
    if (depth_ == static_cast<std::size_t>(deepest_nesting)) {
        give_up();
        return false;
    }
    dictionaries_[depth_++] = dictionary;
    in_empty_ = is_empty;
    return true;
}

bool property_list_cursor::enter() {
    switch (begin_value(depth_)) {
        case tag::dict:
            return open(true, false);
        case tag::empty_dict:
            return open(true, true);
        case tag::array:
            return open(false, false);
        case tag::empty_array:
            return open(false, true);
        default:
            give_up();
            return false;
    }
}

// The text up to `close`, after which a line begins; as it stands, when it has no escapes.
bool property_list_cursor::read_text(std::string_view close, std::string_view& text, stored_arena* arena) {
    const char* const start = at_;
    bool beyond_ascii = false;
    const char* const stop = text_end(start, beyond_ascii);
    if (*stop == '&') return read_escaped(start, close, text, arena);
    text = {start, static_cast<std::size_t>(stop - start)};
    at_ = stop;
    if (static_cast<std::size_t>(end_ - stop) < close.size() ||
        std::memcmp(stop, close.data(), close.size()) != 0 || (beyond_ascii && holds_no_character(text))) {
        give_up();
        return false;
    }
    at_ += close.size();
    return true;
}

// Without an arena the text is looked at and not kept.
bool property_list_cursor::read_escaped(const char* start, std::string_view close, std::string_view& text,
                                        stored_arena* arena) {
    const std::string_view ahead(start, end_);
    const std::string_view raw = ahead.substr(0, ahead.find('<'));  // the foot has one
    const auto room = arena ? arena->room_for_text(raw.size()) : std::span<char>();
    std::size_t kept = 0;
    const auto keep = [&](std::string_view part) {
        if (arena && !part.empty()) std::memcpy(room.data() + kept, part.data(), part.size());
        kept += part.size();
    };
    const char* at = start;
    bool right =
        !holds_no_character(raw) && std::string_view(raw.data() + raw.size(), end_).starts_with(close);
    while (right) {
        bool beyond_ascii = false;
        const char* const stop = text_end(at, beyond_ascii);
        keep({at, static_cast<std::size_t>(stop - at)});
        at = stop;
        if (*stop == '<') break;
        const auto* found = escape_at({stop, end_});
        right = found != nullptr;
        if (!right) break;
        keep({&found->character, 1});
        at += found->text.size();
    }
    if (!right) {
        give_up();
        return false;
    }
    text = arena ? std::string_view(room.data(), kept) : std::string_view();
    at_ = at + close.size();
    return true;
}

// A text in which an escape would be no use: that of a number, a date or data.
bool property_list_cursor::read_plain(std::string_view close, std::string_view& text) {
    if (read_text(close, text, nullptr) && text.data() != nullptr) return true;
    give_up();
    return false;
}

bool property_list_cursor::read_key(std::string_view& key, stored_arena* arena) {
    if (!begin_line(1)) return false;
    if (!starts(at_, "<key>")) {
        give_up();
        return false;
    }
    at_ += key_open.size();
    return read_text(key_close, key, arena);
}

std::optional<std::string_view> property_list_cursor::next_key(stored_arena& arena) {
    if (!usual_ || depth_ == 0 || !dictionaries_[depth_ - 1]) {
        give_up();
        return std::nullopt;
    }
    std::string_view key;
    if (is_at_end(dict_close) || !read_key(key, &arena)) return std::nullopt;
    return key;
}

bool property_list_cursor::next_item() {
    if (!usual_ || depth_ == 0 || dictionaries_[depth_ - 1]) {
        give_up();
        return false;
    }
    const char* const line = at_;
    if (is_at_end(array_close)) return false;
    at_ = line;
    return true;
}

void property_list_cursor::leave() {
    if (!usual_ || depth_ == 0) return give_up();
    if (dictionaries_[depth_ - 1]) {
        read_dictionary(nullptr);
    } else {
        read_array(nullptr);
    }
}

stored_view property_list_cursor::read_array(stored_arena* arena) {
    const std::size_t first = items_.size();
    while (!is_at_end(array_close)) {
        const auto item = read_tagged(begin_value(1), arena);
        if (arena) items_.push_back(item);
    }
    if (!usual_ || !arena) return {};
    const stored_view made(arena->keep(std::span<const stored_view>(items_).subspan(first)));
    items_.resize(first);
    return made;
}

stored_view property_list_cursor::read_dictionary(stored_arena* arena) {
    const std::size_t first = members_.size();
    std::string_view key;
    while (!is_at_end(dict_close) && read_key(key, arena)) {
        const auto value = read_tagged(begin_value(depth_), arena);
        if (arena) members_.push_back({key, value});
    }
    if (!usual_ || !arena) return {};
    const stored_view made(arena->keep(std::span<const stored_member>(members_).subspan(first)));
    members_.resize(first);
    return made;
}

stored_view property_list_cursor::read_scalar(tag kind, std::string_view text, stored_arena* arena) {
    if (kind == tag::integer) {
        if (const auto number = integer_from_text(text)) return stored_view(*number);
    }
    if (kind == tag::integer || kind == tag::real) {
        if (const auto number = number_from_text(text)) return stored_view(*number);
    } else if (kind == tag::date) {
        if (const auto moment = date_from_text(text)) return stored_view::of_date(*moment);
    } else if (const auto bytes = bytes_from_base64(text)) {
        return arena ? stored_view::of_data(arena->keep(*bytes)) : stored_view::of_data({});
    }
    give_up();  // the strict reader leaves such a value out
    return {};
}

stored_view property_list_cursor::read_tagged(tag kind, stored_arena* arena) {
    std::string_view text;
    switch (kind) {
        case tag::string:
            return read_text("</string>\n", text, arena) ? stored_view(text) : stored_view();
        case tag::integer:
            return read_plain("</integer>\n", text) ? read_scalar(kind, text, arena) : stored_view();
        case tag::real:
            return read_plain("</real>\n", text) ? read_scalar(kind, text, arena) : stored_view();
        case tag::data:
            return read_plain("</data>\n", text) ? read_scalar(kind, text, arena) : stored_view();
        case tag::date:
            return read_plain("</date>\n", text) ? read_scalar(kind, text, arena) : stored_view();
        case tag::yes:
            return stored_view(true);
        case tag::no:
            return stored_view(false);
        case tag::empty_dict:
            return open(true, true) && is_at_end(dict_close) ? stored_view(std::span<const stored_member>())
                                                             : stored_view();
        case tag::empty_array:
            return open(false, true) && is_at_end(array_close) ? stored_view(std::span<const stored_view>())
                                                               : stored_view();
        case tag::dict:
            return open(true, false) ? read_dictionary(arena) : stored_view();
        case tag::array:
            return open(false, false) ? read_array(arena) : stored_view();
        case tag::none:
            break;
    }
    return {};
}

stored_view property_list_cursor::read(stored_arena& arena) {
    return read_tagged(begin_value(depth_), &arena);
}

void property_list_cursor::skip() {
    read_tagged(begin_value(depth_), nullptr);
}

}  // namespace vistels
