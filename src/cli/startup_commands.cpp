// SPDX-License-Identifier: GPL-3.0-or-later
#include <memory>

#include "app/settings.h"
#include "app/start_up.h"
#include "app/vaults.h"
#include "cli/commands.h"
#include "util/clock.h"

namespace vistels {

namespace {

property_array texts(const std::vector<std::string>& all) {
    return property_array(all.begin(), all.end());
}

result<command_outcome> run_startup(const home_places& places, double build) {
    const double begun = steady_clock().seconds();
    const auto report = start_up(places, build, steady_clock().seconds() - begun);
    if (!report) return report.error();
    property_array windows;
    for (const auto& window : report.value().windows) {
        property_dictionary one;
        one.add("root ID", window.root_id);
        if (!window.name.empty()) one.add("name", window.name);
        one.add("order", window.order);
        one.add("open_from_path", window.open_from_path);
        windows.emplace_back(std::move(one));
    }
    property_dictionary printed;
    printed.add("home_vault", places.home_vault);
    printed.add("state_folder", places.state_folder);
    printed.add("cleaned", texts(report.value().cleaned));
    printed.add("recovered", texts(report.value().recovered));
    printed.add("messages", texts(report.value().messages));
    printed.add("windows", std::move(windows));
    if (auto noted = note_clean_quit(report.value(), {}); !noted) return noted.error();
    return command_outcome{std::move(printed)};
}

result<command_outcome> run_scan(const std::string& vault) {
    const auto content = scan_vault(vault);
    if (!content) return content.error();
    property_dictionary counts;
    for (std::size_t index = 0; index < item_kinds().size(); ++index) {
        counts.add(item_kinds()[index].count_key, static_cast<std::int64_t>(content.value().counts[index]));
    }
    property_array items;
    for (const auto& item : content.value().items) {
        property_dictionary one;
        one.add("file_name_", item.file_name_);
        one.add("full_file_path", item.full_file_path);
        one.add("type", item_kinds()[static_cast<std::size_t>(item.kind)].type);
        items.emplace_back(std::move(one));
    }
    property_dictionary printed;
    printed.add("counts", std::move(counts));
    printed.add("items", std::move(items));
    return command_outcome{std::move(printed)};
}

void register_vault_commands(CLI::App& program, command_line& line) {
    CLI::App* vault = line.group(program, "vault", "make and list vaults");

    struct create_values {
        std::string parent, name;
        bool replace = false;
    };
    const auto create = std::make_shared<create_values>();
    CLI::App* command =
        line.command(*vault, "create", "make a vault", [create, &line]() -> result<command_outcome> {
            const auto made = create->replace ? replace_vault(line.places(), create->parent, create->name)
                                              : create_vault(create->parent, create->name);
            if (!made) return made.error();
            property_dictionary printed;
            printed.add("vault", made.value());
            return command_outcome{std::move(printed)};
        });
    command->add_option("PARENT", create->parent, "folder in which it is made")->required();
    command->add_option("NAME", create->name, "its name, without the ending")->required();
    command->add_flag("--replace", create->replace,
                      "put it in the place of one of that name, which goes to the trash");

    const auto scanned = std::make_shared<std::string>();
    command = line.command(*vault, "scan", "count and list what a vault holds",
                           [scanned] { return run_scan(*scanned); });
    command->add_option("VAULT", *scanned, "the vault's folder")->required();
}

}  // namespace

void register_startup_commands(CLI::App& program, command_line& line) {
    const auto build = std::make_shared<double>(VISTELS_BUILD_NUMBER);
    CLI::App* command = line.command(program, "startup", "the steps of a start, without a window",
                                     [&line, build] { return run_startup(line.places(), *build); });
    add_number(command, "--build", *build, "number of the running build");

    CLI::App* settings = line.group(program, "settings", "the application's settings");
    line.command(*settings, "show", "the settings in force", [&line]() -> result<command_outcome> {
        return command_outcome{settings_in_force(line.places())};
    });

    register_vault_commands(program, line);
}

}  // namespace vistels
