// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command_line.h"

#include <cmath>
#include <memory>
#include <utility>

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
        if (!number) return failure{"\"" + part + "\" is no number."};
        numbers.push_back(*number);
    }
    return numbers;
}

std::vector<std::string> texts_from_list(const std::string& text) {
    auto parts = parts_of(text);
    std::erase(parts, std::string());
    return parts;
}

}  // namespace vistels
