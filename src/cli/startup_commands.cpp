// SPDX-License-Identifier: GPL-3.0-or-later
#include <iostream>
#include <memory>

#include "app/settings/settings.h"
#include "app/start/settings_in_force.h"
#include "app/start/start_up.h"
#include "app/vaults/vaults.h"
#include "cli/commands.h"
#include "util/clock.h"

namespace vistels {

namespace {

property_array texts(const std::vector<std::string>& all) {
    return property_array(all.begin(), all.end());
}

property_array texts(const std::vector<failure>& all) {
    property_array sentences;
    for (const auto& one : all) sentences.emplace_back(one.message());
    return sentences;
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
    auto messages = report.value().messages;
    if (!report.value().ended_well_before) messages.insert(messages.begin(), report.value().unclean_end);
    printed.add("messages", texts(messages));
    printed.add("windows", std::move(windows));
    if (auto noted = note_clean_quit(report.value()); !noted) return noted.error();
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

result<command_outcome> list_vaults(const home_places& places) {
    const std::string focus = focus_vault_of(places).path;
    property_array all;
    for (const auto& vault : known_vaults(places)) {
        property_dictionary one;
        one.add("vault", vault);
        one.add("name", vault_name(vault));
        one.add("focus", is_same_folder(vault, focus));
        one.add("away", !is_folder(vault));
        all.emplace_back(std::move(one));
    }
    return command_outcome{std::move(all)};
}

// What is not as it should be with the list does not undo the vault.
result<command_outcome> run_create(const home_places& places, const new_vault_request& request) {
    const auto made = create_new_vault(places, request);
    if (!made) return made.error();
    property_dictionary printed;
    printed.add("vault", made.value().path);
    const failure& problem = made.value().problem;
    if (problem) std::cerr << problem.message() << '\n';
    return command_outcome{std::move(printed), problem ? 1 : 0};
}

using vault_change = result<void> (*)(const home_places&, const std::string& vault);

result<void> add_vault(const home_places& places, const std::string& vault) {
    const auto added = add_known_vault(places, vault);
    return added ? result<void>() : result<void>(added.error());
}

// A change of the list of vaults, which prints the list.
void register_list_command(CLI::App& group, command_line& line, const char* name, const char* description,
                           vault_change change) {
    const auto path = std::make_shared<std::string>();
    CLI::App* command =
        line.command(group, name, description, [path, change, &line]() -> result<command_outcome> {
            const auto places = line.places();
            if (auto changed = change(places, *path); !changed) return changed.error();
            return list_vaults(places);
        });
    command->add_option("PATH", *path, "the vault's folder")->required();
}

void register_vault_commands(CLI::App& program, command_line& line) {
    CLI::App* vault = line.group(program, "vault", "make and list vaults");

    const auto request = std::make_shared<new_vault_request>();
    CLI::App* command =
        line.command(*vault, "create", "make a vault, list it, and focus it where the settings say so",
                     [request, &line] { return run_create(line.places(), *request); });
    command->add_option("PARENT", request->parent, "folder in which it is made")->required();
    command->add_option("NAME", request->name, "its name, without the ending")->required();
    command->add_flag("--replace", request->replace,
                      "put it in the place of one of that name, which goes to the trash");

    line.command(*vault, "list", "the known vaults", [&line] { return list_vaults(line.places()); });
    register_list_command(*vault, line, "add", "list an existing vault", add_vault);
    register_list_command(*vault, line, "forget", "take a vault from the list; its files stay",
                          remove_known_vault);
    register_list_command(*vault, line, "focus", "make a vault the one into which new items are saved",
                          choose_focus_vault);

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
