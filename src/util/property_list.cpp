// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/property_list.h"

#include <expat.h>

#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "util/file_failures.h"
#include "util/file_system.h"
#include "util/stored_form_failures.h"
#include "util/stored_sink.h"
#include "util/text_forms.h"

namespace vistels {

namespace {

enum class element { plist, dict, array, key, string, integer, real, yes, no, data, date, unknown };

// The parser copies what it is fed; more than a cache holds only slows it down.
constexpr std::size_t parser_chunk_bytes = std::size_t{1} << 16;
// A single tag, comment or declaration has to be in memory whole, with about twenty times its size for a tag
// with nothing but attributes.
constexpr std::size_t longest_markup_bytes = std::size_t{1} << 20;

struct element_name {
    element kind;
    std::string_view name;
};

constexpr element_name element_names[] = {
    {element::plist, "plist"}, {element::dict, "dict"},     {element::array, "array"},
    {element::key, "key"},     {element::string, "string"}, {element::integer, "integer"},
    {element::real, "real"},   {element::yes, "true"},      {element::no, "false"},
    {element::data, "data"},   {element::date, "date"},
};

element element_named(std::string_view name) {
    for (const auto& entry : element_names) {
        if (entry.name == name) return entry.kind;
    }
    return element::unknown;
}

bool is_container(element kind) {
    return kind == element::dict || kind == element::array;
}

stored_view scalar_from_text(element kind, std::string_view text, stored_arena& arena) {
    switch (kind) {
        case element::string:
            return stored_view(arena.keep(text));
        case element::integer:
            if (const auto number = integer_from_text(text)) return stored_view(*number);
            if (const auto number = number_from_text(text)) return stored_view(*number);
            return {};
        case element::real:
            if (const auto number = number_from_text(text)) return stored_view(*number);
            return {};
        case element::yes:
            return stored_view(true);
        case element::no:
            return stored_view(false);
        case element::data:
            if (const auto bytes = bytes_from_base64(text)) return stored_view::of_data(arena.keep(*bytes));
            return {};
        case element::date:
            if (const auto moment = date_from_text(text)) return stored_view::of_date(*moment);
            return {};
        default:
            return {};
    }
}

// Builds the views from the parser's calls. The first fault stops the parser; nothing throws through it.
class view_builder {
  public:
    view_builder(XML_Parser parser, stored_arena& arena) : parser_(parser), arena_(arena) {
        XML_SetUserData(parser, this);
        XML_SetElementHandler(parser, on_start, on_end);
        XML_SetCharacterDataHandler(parser, on_text);
        XML_SetStartDoctypeDeclHandler(parser, on_doctype);
        XML_SetSkippedEntityHandler(parser, on_unknown_entity);
    }

    const failure& fault() const { return fault_; }
    bool has_root() const { return has_root_; }
    stored_view root() const { return root_; }

  private:
    struct open_container {
        element kind;
        std::size_t first;  // of its items in items_, or of its members in members_
        std::string_view key;
        bool has_key = false;
    };

    static view_builder& self(void* data) { return *static_cast<view_builder*>(data); }
    static void on_start(void* data, const XML_Char* name, const XML_Char** attributes) {
        self(data).start(name, attributes[0] != nullptr);
    }
    static void on_end(void* data, const XML_Char* name) { self(data).end(element_named(name)); }
    static void on_text(void* data, const XML_Char* text, int length) {
        self(data).characters(std::string_view(text, static_cast<std::size_t>(length)));
    }
    static void on_doctype(void* data, const XML_Char*, const XML_Char*, const XML_Char*, int declares) {
        if (declares) self(data).stop(file_declares_entities());
    }
    static void on_unknown_entity(void* data, const XML_Char* name, int) {
        self(data).stop(entity_is_unknown(std::string(name).substr(0, 40)));
    }

    void stop(failure reason) {
        if (!fault_) fault_ = std::move(reason);
        XML_StopParser(parser_, XML_FALSE);
    }

    void start(std::string_view name, bool has_attributes) {
        const element kind = element_named(name);
        if (kind == element::unknown) return stop(element_is_unknown(name.substr(0, 40)));
        if (kind == element::plist) {
            if (in_plist_) return stop(plist_inside_another());
            in_plist_ = true;
            return;
        }
        if (!in_plist_) return stop(file_is_no_property_list());
        if (has_attributes) return stop(value_has_attributes());
        if (scalar_ != element::unknown) return stop(element_inside_a_value());
        if (!accepts(kind)) return stop(keys_and_values_not_by_turns());
        if (is_container(kind)) {
            if (static_cast<int>(open_.size()) >= deepest_nesting) {
                return stop(nested_too_deep(deepest_nesting));
            }
            open_.push_back({kind, kind == element::dict ? members_.size() : items_.size(), {}, false});
        } else {
            scalar_ = kind;
            text_.clear();
        }
    }

    bool accepts(element kind) const {
        if (open_.empty()) return kind != element::key && !has_root_;
        const auto& top = open_.back();
        if (top.kind == element::array) return kind != element::key;
        return top.has_key != (kind == element::key);
    }

    void characters(std::string_view text) {
        if (scalar_ != element::unknown) {
            text_.append(text);
            return;
        }
        for (const char character : text) {
            if (character != '\t' && character != '\n' && character != ' ' && character != '\r') {
                return stop(text_outside_a_value());
            }
        }
    }

    void end(element kind) {
        if (fault_ || kind == element::plist) return;
        if (is_container(kind)) {
            const auto top = open_.back();
            open_.pop_back();
            if (top.has_key) return stop(key_has_no_value());
            place(kind == element::dict ? taken(members_, top.first) : taken(items_, top.first));
        } else if (kind == element::key) {
            open_.back().key = arena_.keep(text_);
            open_.back().has_key = true;
            scalar_ = element::unknown;
        } else {
            scalar_ = element::unknown;
            place(scalar_from_text(kind, text_, arena_));
        }
    }

    void place(stored_view value) {
        if (open_.empty()) {
            root_ = value;
            has_root_ = true;
            return;
        }
        auto& top = open_.back();
        top.has_key = false;
        if (value.kind() == stored_view::form::null) return;
        if (top.kind == element::array) {
            items_.push_back(value);
        } else {
            members_.push_back({top.key, value});
        }
    }

    template <class Part>
    stored_view taken(std::vector<Part>& parts, std::size_t first) {
        const auto kept = arena_.keep(std::span<const Part>(parts).subspan(first));
        parts.resize(first);
        return stored_view(kept);
    }

    XML_Parser parser_;
    stored_arena& arena_;
    std::vector<open_container> open_;
    // Those of all open arrays and dictionaries, the outermost first.
    std::vector<stored_view> items_;
    std::vector<stored_member> members_;
    element scalar_ = element::unknown;  // the value being read; unknown between values
    std::string text_;
    stored_view root_;
    bool in_plist_ = false;
    bool has_root_ = false;
    failure fault_;
};

// The parser would follow a file's first bytes into that encoding, whatever it was told.
bool is_utf_16(std::string_view bytes) {
    constexpr std::string_view zero("\0", 1);
    const auto start = bytes.substr(0, 2);
    return start == "\xFE\xFF" || start == "\xFF\xFE" || start.find(zero) != std::string_view::npos;
}

}  // namespace

result<stored_view> read_property_list(std::string_view bytes, const std::string& name, stored_arena& arena) {
    if (bytes.starts_with("bplist")) return file_cannot_be_read(name, property_list_is_binary());
    if (is_utf_16(bytes)) return file_cannot_be_read(name, text_is_not_utf_8());
    const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate("UTF-8"),
                                                                         XML_ParserFree);
    if (!parser) return file_cannot_be_read(name, memory_is_short());
    view_builder builder(parser.get(), arena);
    for (std::size_t fed = 0, last = 0; last == 0;) {
        const auto part = bytes.substr(fed, parser_chunk_bytes);
        fed += part.size();
        last = fed == bytes.size();
        const auto state = XML_Parse(parser.get(), part.data(), static_cast<int>(part.size()), last != 0);
        const auto begun = XML_GetCurrentByteIndex(parser.get());
        const bool endless = begun >= 0 && fed - static_cast<std::size_t>(begun) > longest_markup_bytes;
        if (state == XML_STATUS_ERROR || endless) {
            const failure reason = builder.fault() ? builder.fault()
                                   : state == XML_STATUS_ERROR
                                       ? xml_is_wrong(XML_ErrorString(XML_GetErrorCode(parser.get())))
                                       : markup_is_too_long();
            return file_cannot_be_read(name, fault_at_line(reason, XML_GetCurrentLineNumber(parser.get())));
        }
    }
    if (!builder.has_root()) return file_cannot_be_read(name, property_list_is_empty());
    return builder.root();
}

result<property_value> read_property_list(std::string_view bytes, const std::string& name) {
    stored_arena arena;
    const auto view = read_property_list(bytes, name, arena);
    if (!view) return view.error();
    return view.value().copy();
}

result<property_value> read_property_list_file(const std::string& path) {
    const auto bytes = read_file(path);
    if (!bytes) return bytes.error();
    return read_property_list(bytes.value(), path);
}

property_dictionary read_dictionary_or_empty(const std::string& path) {
    auto value = read_property_list_file(path);
    if (!value || !value.value().dictionary()) return {};
    return std::move(*value.value().dictionary());
}

std::string write_property_list(const property_value& value) {
    property_list_sink sink;
    sink.put("", value);
    return sink.take();
}

}  // namespace vistels
