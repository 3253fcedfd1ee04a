// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/property_list.h"

#include <expat.h>

#include <memory>
#include <utility>
#include <vector>

#include "util/file_system.h"
#include "util/text_forms.h"

namespace vistels {

namespace {

enum class element { plist, dict, array, key, string, integer, real, yes, no, data, date, unknown };

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

property_value scalar_from_text(element kind, std::string& text) {
    switch (kind) {
        case element::string:
            return property_value(std::exchange(text, {}));
        case element::integer:
            if (const auto number = integer_from_text(text)) return property_value(*number);
            if (const auto number = number_from_text(text)) return property_value(*number);
            return {};
        case element::real:
            if (const auto number = number_from_text(text)) return property_value(*number);
            return {};
        case element::yes:
            return property_value(true);
        case element::no:
            return property_value(false);
        case element::data:
            if (auto bytes = bytes_from_base64(text)) return property_value(property_data{std::move(*bytes)});
            return {};
        case element::date:
            if (const auto moment = date_from_text(text)) return property_value(property_date{*moment});
            return {};
        default:
            return {};
    }
}

// Builds the tree from the parser's calls. The first fault stops the parser; nothing throws through it.
class tree_builder {
  public:
    explicit tree_builder(XML_Parser parser) : parser_(parser) {
        XML_SetUserData(parser, this);
        XML_SetElementHandler(parser, on_start, on_end);
        XML_SetCharacterDataHandler(parser, on_text);
        XML_SetEntityDeclHandler(parser, on_entity);
    }

    const std::string& fault() const { return fault_; }
    bool has_root() const { return has_root_; }
    property_value take_root() { return std::move(root_); }

  private:
    struct open_container {
        element kind;
        property_dictionary dictionary;
        property_array array;
        std::string key;
        bool has_key = false;
    };

    static tree_builder& self(void* data) { return *static_cast<tree_builder*>(data); }
    static void on_start(void* data, const XML_Char* name, const XML_Char**) { self(data).start(name); }
    static void on_end(void* data, const XML_Char* name) { self(data).end(element_named(name)); }
    static void on_text(void* data, const XML_Char* text, int length) {
        self(data).characters(std::string_view(text, static_cast<std::size_t>(length)));
    }
    static void on_entity(void* data, const XML_Char*, int, const XML_Char*, int, const XML_Char*,
                          const XML_Char*, const XML_Char*, const XML_Char*) {
        self(data).stop("it declares entities, which are not allowed");
    }

    void stop(std::string reason) {
        if (fault_.empty()) fault_ = std::move(reason);
        XML_StopParser(parser_, XML_FALSE);
    }

    void start(std::string_view name) {
        const element kind = element_named(name);
        if (kind == element::unknown)
            return stop("\"" + std::string(name.substr(0, 40)) + "\" is no property list element");
        if (kind == element::plist) {
            if (in_plist_) return stop("a \"plist\" element stands inside another");
            in_plist_ = true;
            return;
        }
        if (!in_plist_) return stop("it is not a property list");
        if (scalar_ != element::unknown) return stop("an element stands inside a value");
        if (!accepts(kind)) return stop("a dictionary must hold keys and values by turns");
        if (is_container(kind)) {
            if (static_cast<int>(open_.size()) >= deepest_nesting) {
                return stop("it is nested more than " + std::to_string(deepest_nesting) + " deep");
            }
            open_.push_back({kind, {}, {}, {}, false});
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
        } else if (text.find_first_not_of(" \t\r\n") != std::string_view::npos) {
            stop("text stands outside a value");
        }
    }

    void end(element kind) {
        if (!fault_.empty() || kind == element::plist) return;
        if (is_container(kind)) {
            auto top = std::move(open_.back());
            open_.pop_back();
            if (top.has_key) return stop("a key has no value");
            place(kind == element::dict ? property_value(std::move(top.dictionary))
                                        : property_value(std::move(top.array)));
        } else if (kind == element::key) {
            open_.back().key = std::exchange(text_, {});
            open_.back().has_key = true;
            scalar_ = element::unknown;
        } else {
            scalar_ = element::unknown;
            place(scalar_from_text(kind, text_));
        }
    }

    void place(property_value value) {
        if (open_.empty()) {
            root_ = std::move(value);
            has_root_ = true;
            return;
        }
        auto& top = open_.back();
        top.has_key = false;
        if (value.is_null()) return;
        if (top.kind == element::array) {
            top.array.push_back(std::move(value));
        } else {
            top.dictionary.add(top.key, std::move(value));
        }
    }

    XML_Parser parser_;
    std::vector<open_container> open_;
    element scalar_ = element::unknown;  // the value being read; unknown between values
    std::string text_;
    property_value root_;
    bool in_plist_ = false;
    bool has_root_ = false;
    std::string fault_;
};

class list_writer {
  public:
    std::string write(const property_value& value) {
        out_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n";
        put(value, 0);
        out_ += "</plist>\n";
        return std::move(out_);
    }

  private:
    void indent(std::size_t level) { out_.append(level, '\t'); }

    void put_escaped(std::string_view text) {
        for (;;) {
            const std::size_t special = text.find_first_of("&<>\r");
            append_valid_text(out_, text.substr(0, special));
            if (special == std::string_view::npos) return;
            switch (text[special]) {
                case '&':
                    out_ += "&amp;";
                    break;
                case '<':
                    out_ += "&lt;";
                    break;
                case '>':
                    out_ += "&gt;";
                    break;
                default:
                    out_ += "&#13;";  // a bare one would be read back as a line feed
                    break;
            }
            text.remove_prefix(special + 1);
        }
    }

    void put_text(std::size_t level, std::string_view name, std::string_view text) {
        indent(level);
        out_ += '<';
        out_ += name;
        out_ += '>';
        put_escaped(text);
        out_ += "</";
        out_ += name;
        out_ += ">\n";
    }

    void put(const property_value& value, std::size_t level) {
        std::visit([&](const auto& held) { put_held(held, level); }, value.get());
    }

    void put_held(std::monostate, std::size_t) {}
    void put_held(bool value, std::size_t level) {
        indent(level);
        out_ += value ? "<true/>\n" : "<false/>\n";
    }
    void put_held(std::int64_t value, std::size_t level) {
        indent(level);
        out_ += "<integer>";
        append_integer(out_, value);
        out_ += "</integer>\n";
    }
    void put_held(double value, std::size_t level) {
        indent(level);
        out_ += "<real>";
        append_shortest(out_, value);
        out_ += "</real>\n";
    }
    void put_held(const std::string& value, std::size_t level) { put_text(level, "string", value); }
    void put_held(const property_data& value, std::size_t level) {
        put_text(level, "data", base64_text(value.bytes));
    }
    void put_held(const property_date& value, std::size_t level) {
        put_text(level, "date", date_text(value.seconds));
    }
    void put_held(const property_array& value, std::size_t level) {
        indent(level);
        if (value.empty()) {
            out_ += "<array/>\n";
            return;
        }
        out_ += "<array>\n";
        for (const auto& item : value) put(item, level + 1);
        indent(level);
        out_ += "</array>\n";
    }
    void put_held(const property_dictionary& value, std::size_t level) {
        indent(level);
        if (value.empty()) {
            out_ += "<dict/>\n";
            return;
        }
        out_ += "<dict>\n";
        for (const auto& entry : value) {
            if (entry.value.is_null()) continue;
            put_text(level + 1, "key", entry.key);
            put(entry.value, level + 1);
        }
        indent(level);
        out_ += "</dict>\n";
    }

    std::string out_;
};

failure unreadable(const std::string& name, const std::string& reason) {
    return {"\"" + name + "\" cannot be read: " + reason + "."};
}

}  // namespace

result<property_value> read_property_list(std::string_view bytes, const std::string& name) {
    if (bytes.starts_with("bplist")) return unreadable(name, "it is a binary property list, not an XML one");
    const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate("UTF-8"),
                                                                         XML_ParserFree);
    if (!parser) return unreadable(name, "there is not enough memory");
    tree_builder builder(parser.get());
    constexpr std::size_t chunk = 1 << 20;
    for (bool last = false; !last;) {
        const auto part = bytes.substr(0, chunk);
        bytes.remove_prefix(part.size());
        last = bytes.empty();
        if (XML_Parse(parser.get(), part.data(), static_cast<int>(part.size()), last) == XML_STATUS_ERROR) {
            const auto line = std::to_string(XML_GetCurrentLineNumber(parser.get()));
            const std::string reason =
                builder.fault().empty() ? XML_ErrorString(XML_GetErrorCode(parser.get())) : builder.fault();
            return unreadable(name, reason + ", at line " + line);
        }
    }
    if (!builder.has_root()) return unreadable(name, "it holds no value");
    return builder.take_root();
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
    return list_writer().write(value);
}

}  // namespace vistels
