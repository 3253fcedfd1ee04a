// SPDX-License-Identifier: GPL-3.0-or-later
#include <memory>
#include <string_view>
#include <utility>

#include "app/settings/search_patterns.h"
#include "cli/commands.h"
#include "formula/parser_ROOT.h"
#include "util/file_system.h"

namespace vistels {

namespace {

struct tokens_values {
    std::string text, file;
    bool is_filter = false;
};

property_dictionary printed_token(const token_ITEM& token) {
    property_dictionary printed;
    printed.add("position", token.token_idx0_position);
    printed.add("type", token_type_text(token.type));
    printed.add("chars", token.chars);
    printed.add("identifiers",
                property_array(token.ray_word_IDENTIFIERS.begin(), token.ray_word_IDENTIFIERS.end()));
    printed.add("wild_card", wild_card_text(token.wild_card_search));
    return printed;
}

property_dictionary printed_formula(const parser_ROOT& parsed) {
    property_array tokens;
    for (const auto& token : parsed.ray_token_ITEMs()) tokens.emplace_back(printed_token(token));
    const auto& used = parsed.identifier_Type_used();
    property_dictionary uses;
    uses.add("QN", used.QUALIFIER_NAME);
    uses.add("QC", used.QUALIFIER_CATEGORY);
    uses.add("AN", used.ATTRIBUTE_NAME);
    uses.add("AC", used.ATTRIBUTE_CATEGORY);
    uses.add("NT", used.NOTE);
    property_dictionary printed;
    printed.add("text", parsed.filter_search_string());
    printed.add("error", parsed.parser_Error());
    printed.add("errors", parsed.parser_Errors_String());
    printed.add("tokens", std::move(tokens));
    printed.add("uses", std::move(uses));
    return printed;
}

property_dictionary tokens_of(std::string_view text, bool is_filter) {
    return printed_formula(is_filter ? parser_ROOT::for_filter(text) : parser_ROOT::for_display(text));
}

result<command_outcome> tokens_of_each(const tokens_values& values) {
    const auto bytes = read_file(values.file);
    if (!bytes) return bytes.error();
    property_array printed;
    for (const auto line : lines_of(bytes.value())) {
        printed.emplace_back(tokens_of(line, values.is_filter));
    }
    return command_outcome{std::move(printed)};
}

result<command_outcome> printed_patterns(const home_places& places) {
    property_array printed;
    for (const auto& one : load_search_patterns(places)) {
        property_dictionary item;
        item.add("pattern", one.pattern);
        item.add("date", one.date ? property_value(property_date{*one.date}) : property_value());
        if (!one.name.empty()) item.add("name", one.name);
        printed.emplace_back(std::move(item));
    }
    return command_outcome{std::move(printed)};
}

void register_tokens(CLI::App& formula, command_line& line) {
    const auto values = std::make_shared<tokens_values>();
    CLI::App* command =
        line.command(formula, "tokens", "the tokens of a formula", [values]() -> result<command_outcome> {
            if (!values->file.empty()) return tokens_of_each(*values);
            return command_outcome{tokens_of(values->text, values->is_filter)};
        });
    command->add_flag("--filter", values->is_filter, "as a filter: a plain search text is written out");
    const auto* text = line.add_text(command, "TEXT", values->text, "the formula");
    auto* file = command->add_option("--each", values->file, "file with one formula a line");
    file->type_name("FILE");
    command->parse_complete_callback([text, file] {
        if (text->empty() == file->empty()) throw CLI::RequiredError("Either TEXT or --each");
    });
}

}  // namespace

void register_formula_commands(CLI::App& program, command_line& line) {
    CLI::App* formula = line.group(program, "formula", "read formulas");
    register_tokens(*formula, line);

    CLI::App* patterns = line.group(program, "patterns", "the remembered filter texts");
    line.command(*patterns, "list", "newest first",
                 [&line]() -> result<command_outcome> { return printed_patterns(line.places()); });
    struct change {
        const char* name;
        const char* description;
        result<void> (*make)(const home_places&, const std::string&);
    };
    for (const auto& one : {change{"remember", "put a text first", remember_search_pattern},
                            change{"remove", "forget a text", remove_search_pattern}}) {
        const auto text = std::make_shared<std::string>();
        CLI::App* command = line.command(*patterns, one.name, one.description,
                                         [text, make = one.make, &line]() -> result<command_outcome> {
                                             const auto places = line.places();
                                             if (auto made = make(places, *text); !made) return made.error();
                                             return printed_patterns(places);
                                         });
        line.add_text(command, "TEXT", *text, "the text as it is typed")->required();
    }
}

}  // namespace vistels
