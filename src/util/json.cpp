// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/json.h"

#include <array>
#include <cmath>
#include <utility>

#include "util/file_failures.h"
#include "util/json_cursor.h"
#include "util/text_forms.h"

namespace vistels {

namespace {

class json_writer {
  public:
    explicit json_writer(json_layout layout) : pretty_(layout == json_layout::pretty) {}

    std::string write(const property_value& value) {
        put(value, 0);
        if (pretty_) out_ += '\n';
        return std::move(out_);
    }

  private:
    void new_line(std::size_t level) {
        if (!pretty_) return;
        out_ += '\n';
        out_.append(level * 2, ' ');
    }

    void put_text(std::string_view text) {
        out_ += '"';
        const bool valid = is_valid_text(text);
        std::string mended;
        if (!valid) mend(text, mended);
        for (const char c : valid ? text : std::string_view(mended)) put_character(c);
        out_ += '"';
    }

    // JSON holds control characters (escaped), which the text form of XML does not; only what is not UTF-8 is
    // replaced.
    static void mend(std::string_view text, std::string& to) {
        std::size_t from = 0;
        for (std::size_t at = 0; at <= text.size(); ++at) {
            const bool control = at < text.size() && static_cast<unsigned char>(text[at]) < 0x20;
            if (at < text.size() && !control) continue;
            append_valid_text(to, text.substr(from, at - from));
            if (control) to += text[at];
            from = at + 1;
        }
    }

    void put_character(char c) {
        constexpr std::string_view hexadecimal = "0123456789abcdef";
        const auto code = static_cast<unsigned char>(c);
        switch (c) {
            case '"':
                out_ += "\\\"";
                break;
            case '\\':
                out_ += "\\\\";
                break;
            case '\n':
                out_ += "\\n";
                break;
            case '\r':
                out_ += "\\r";
                break;
            case '\t':
                out_ += "\\t";
                break;
            default:
                if (code < 0x20) {
                    out_ += "\\u00";
                    out_ += hexadecimal[code >> 4U];
                    out_ += hexadecimal[code & 15U];
                } else {
                    out_ += c;
                }
        }
    }

    void put(const property_value& value, std::size_t level) {
        std::visit([&](const auto& held) { put_held(held, level); }, value.get());
    }

    void put_held(std::monostate, std::size_t) { out_ += "null"; }
    void put_held(bool value, std::size_t) { out_ += value ? "true" : "false"; }
    void put_held(std::int64_t value, std::size_t) { append_integer(out_, value); }
    void put_held(double value, std::size_t) {
        if (!std::isfinite(value)) {
            out_ += "null";
            return;
        }
        const std::size_t from = out_.size();
        append_shortest(out_, value);
        if (out_.find_first_of(".e", from) == std::string::npos) out_ += ".0";
    }
    void put_held(const std::string& value, std::size_t) { put_text(value); }
    void put_held(const property_data& value, std::size_t) { put_text(base64_text(value.bytes)); }
    void put_held(const property_date& value, std::size_t) { put_text(date_text(value.seconds)); }

    template <class Items, class Put>
    void put_items(const Items& items, std::string_view brackets, std::size_t level, Put put_item) {
        out_ += brackets[0];
        bool first = true;
        for (const auto& item : items) {
            if (!first) out_ += ',';
            first = false;
            new_line(level + 1);
            put_item(item);
        }
        if (!first) new_line(level);
        out_ += brackets[1];
    }

    void put_held(const property_array& value, std::size_t level) {
        put_items(value, "[]", level, [&](const property_value& item) { put(item, level + 1); });
    }
    void put_held(const property_dictionary& value, std::size_t level) {
        put_items(value, "{}", level, [&](const property_entry& entry) {
            put_text(entry.key);
            out_ += pretty_ ? ": " : ":";
            put(entry.value, level + 1);
        });
    }

    bool pretty_;
    std::string out_;
};

}  // namespace

result<stored_view> read_json(std::string_view bytes, const std::string& name, stored_arena& arena) {
    json_cursor cursor(bytes);
    const auto document = cursor.read(arena);
    if (!cursor.finish()) return file_cannot_be_read(name, cursor.fault());
    return document;
}

result<property_value> read_json(std::string_view bytes, const std::string& name) {
    stored_arena arena;
    const auto document = read_json(bytes, name, arena);
    if (!document) return document.error();
    return document.value().copy();
}

std::string write_json(const property_value& value, json_layout layout) {
    return json_writer(layout).write(value);
}

}  // namespace vistels
