// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command_line.h"

#include <cmath>
#include <memory>
#include <utility>

#include "cli/command_failures.h"
#include "util/text_forms.h"

namespace vistels {

namespace {

constexpr const char* home_help =
    "folder that holds the home vault and the state folder (else VISTELS_HOME, else the user's own)";

std::vector<std::string> parts_of(const std::string& text) {
    std::vector<std::string> parts;
    std::size_t at = 0;
    while (at <= text.size()) {
        const std::size_t comma = std::min(text.find(',', at), text.size());
        parts.push_back(text.substr(at, comma - at));
        at = comma + 1;
    }
    return parts;
}

std::optional<double> finite_from(const std::string& text) {
    const auto number = number_from_text(text);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

// What the parser takes for no option.
constexpr char text_mark = '\x1D';

const CLI::App* command_named(const CLI::App& above, const std::string& name) {
    for (const auto* one : above.get_subcommands(nullptr)) {
        if (one->get_name() == name) return one;
    }
    return nullptr;
}

// "-.5"
bool is_number_without_zero(const std::string& argument) {
    return argument.size() > 2 && argument.starts_with("-.") && argument[2] >= '0' && argument[2] <= '9';
}

// "--name", "--name=value" or "-n" of an option that the command has.
bool is_option_of(const CLI::App& command, const std::string& argument) {
    const std::string name = argument.substr(0, argument.find('='));
    return name.size() > 1 && command.get_option_no_throw(name) != nullptr;
}

}  // namespace

CLI::App* command_line::group(CLI::App& above, const std::string& name, const std::string& description) {
    CLI::App* made = above.add_subcommand(name, description);
    made->require_subcommand(1);
    made->add_option("--home", home_, home_help);
    return made;
}

CLI::App* command_line::command(CLI::App& above, const std::string& name, const std::string& description,
                                work run) {
    CLI::App* made = above.add_subcommand(name, description);
    made->add_option("--home", home_, home_help);
    made->callback([this, run = std::move(run)] { chosen_ = run; });
    return made;
}

CLI::Option* command_line::add_text(CLI::App* command, const std::string& name, std::string& text,
                                    const std::string& description) {
    take_texts_.insert(command);
    const auto take = [&text](const CLI::results_t& given) {
        text = given.back().starts_with(text_mark) ? given.back().substr(1) : given.back();
        return true;
    };
    return command->add_option(name, take, description)->type_name("TEXT")->type_size(1);
}

std::vector<std::string> command_line::prepared_arguments(const CLI::App& program,
                                                          std::vector<std::string> arguments) const {
    const CLI::App* command = &program;
    for (auto& argument : arguments) {
        if (argument == "--") break;
        const bool takes_text = take_texts_.contains(command);
        if (const auto* below = command_named(*command, argument)) {
            command = below;
        } else if (takes_text && argument.starts_with('-') && !is_option_of(*command, argument)) {
            argument.insert(argument.begin(), text_mark);
        } else if (!takes_text && is_number_without_zero(argument)) {
            argument.insert(1, "0");
        }
    }
    return arguments;
}

CLI::Option* add_number(CLI::App* command, const std::string& name, double& number,
                        const std::string& description) {
    const auto take = [&number](const CLI::results_t& given) {
        const auto read = finite_from(given.back());
        if (read) number = *read;
        return read.has_value();
    };
    return command->add_option(name, take, description)->type_name("NUMBER")->type_size(1);
}

result<std::vector<double>> numbers_from_list(const std::string& text) {
    std::vector<double> numbers;
    for (const auto& part : parts_of(text)) {
        const auto number = finite_from(part);
        if (!number) return text_is_no_number(part);
        numbers.push_back(*number);
    }
    return numbers;
}

std::vector<std::string> texts_from_list(const std::string& text) {
    auto parts = parts_of(text);
    std::erase(parts, std::string());
    return parts;
}

std::vector<std::string_view> lines_of(std::string_view bytes) {
    std::vector<std::string_view> lines;
    while (!bytes.empty()) {
        const std::size_t end = std::min(bytes.find('\n'), bytes.size());
        lines.push_back(bytes.substr(0, end));
        bytes.remove_prefix(std::min(end + 1, bytes.size()));
    }
    return lines;
}

}  // namespace vistels
