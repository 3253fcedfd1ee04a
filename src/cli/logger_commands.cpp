// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/logger_commands.h"

#include <memory>
#include <utility>
#include <vector>

#include "app/event/timeline_links.h"
#include "app/settings/code_window_settings.h"
#include "logger/code_window.h"
#include "logger/press_script.h"
#include "timeline/files/timeline_document.h"
#include "util/json.h"
#include "util/safe_write.h"
#include "util/simulated_run_loop.h"
#include "video/vault_lock.h"

namespace vistels {

namespace {

result<command_outcome> show(const std::string& folder) {
    const auto loaded = load_button_dict(logger_folder_of(folder));
    if (!loaded) return loaded.error();
    return command_outcome{write_button_dict(loaded.value())};
}

// A code window that lay in "Logger" below its folder is put there in the new one too, with the pictures of
// its buttons.
result<command_outcome> resave(const std::string& folder, const std::string& to) {
    const auto lock = vault_lock::take_around(to);
    if (!lock) return lock.error();
    const std::string from = logger_folder_of(folder);
    std::vector<failure> damaged;
    const auto loaded = load_code_window(from, &damaged);
    if (!loaded) return loaded.error();
    if (!damaged.empty()) return damaged.front();
    const bool lies_below = from != folder && !has_button_dict(to);
    const std::string into = lies_below ? path_join(to, logger_folder_name) : to;
    if (auto saved = save_code_window(loaded.value(), into); !saved) return saved.error();
    for (const auto& button : loaded.value().buttons.buttons) {
        const std::string picture = button_picture_path(*button, from);
        const std::string copy = button_picture_path(*button, into);
        if (picture == copy || !file_exists(picture)) continue;
        const auto bytes = read_file(picture);
        if (!bytes) return bytes.error();
        if (auto copied = safe_write_bytes(copy, bytes.value()); !copied) return copied.error();
    }
    property_dictionary printed;
    printed.add("buttons", static_cast<std::int64_t>(loaded.value().buttons.buttons.size()));
    return command_outcome{std::move(printed)};
}

property_dictionary fired_entry(const button_fired& fired) {
    property_dictionary entry;
    entry.add("at", fired.at);
    entry.add("button", fired.button);
    entry.add("name", fired.name);
    entry.add("state", fired.is_down ? "down" : "up");
    entry.add("cause", press_cause_text(fired.cause));
    entry.add("blocked", fired.blocked);
    const auto made = made_kind_text(fired.made);
    entry.add("made", made.empty() ? property_value() : property_value(made));
    return entry;
}

struct press_values {
    std::string folder, timeline, script;
};

struct script_to_press {
    button_dict buttons;
    std::vector<press_step> steps;
};

result<script_to_press> read_script(const press_values& values) {
    auto loaded = load_button_dict(logger_folder_of(values.folder));
    if (!loaded) return loaded.error();
    const auto bytes = read_file(values.script);
    if (!bytes) return bytes.error();
    const auto script = read_json(bytes.value(), values.script);
    if (!script) return script.error();
    auto steps = read_press_script(script.value(), loaded.value().buttons, values.script);
    if (!steps) return steps.error();
    return script_to_press{std::move(loaded).value(), std::move(steps).value()};
}

result<command_outcome> press(const press_values& values, const home_places& places) {
    // Where it is wrong no timeline is made.
    if (const auto wanted = read_script(values); !wanted) return wanted.error();
    // The timeline's own timers stand still: between two events may be years, and it is saved in the end.
    simulated_run_loop standing;
    simulated_run_loop loop;
    auto opened = open_linked_timeline(values.timeline, places, standing);
    if (!opened) return opened.error();
    auto& document = *opened.value();
    // Only now are the buttons what they are: opening may have given them triggers that a kill left behind.
    const auto pressed = read_script(values);
    if (!pressed) return pressed.error();
    button_dict buttons = pressed.value().buttons;
    press_engine engine(document, loop.time());
    engine.set_settings(load_press_settings(places));
    engine.set_earliest_time(first_seconds(document, places));
    engine.set_buttons(buttons.buttons, 0);

    property_array fired;
    auto reporting =
        engine.fired.connect([&fired](const button_fired& one) { fired.emplace_back(fired_entry(one)); });
    const double ended_at = run_press_script(engine, pressed.value().steps, loop);
    reporting.disconnect();
    property_array down;
    for (const auto& one : engine.down_buttons()) down.emplace_back(one.button);
    // No press is lost: what is still down makes its clip up to the end of the script.
    engine.release_all(ended_at);
    if (auto recorded = engine.record_waiting(); !recorded) return recorded.error();
    if (auto saved = document.save_now(); !saved) return saved.error();
    // Triggers that presses added.
    if (engine.buttons() != buttons.buttons) {
        buttons.buttons = engine.buttons();
        if (auto saved = save_button_dict(buttons, logger_folder_of(values.folder)); !saved)
            return saved.error();
    }
    property_dictionary printed;
    printed.add("fired", std::move(fired));
    printed.add("down", std::move(down));
    return command_outcome{std::move(printed)};
}

}  // namespace

void register_logger_commands(CLI::App& program, command_line& line) {
    CLI::App* logger = line.group(program, "logger", "code windows and their buttons");

    const auto shown = std::make_shared<std::string>();
    CLI::App* command =
        line.command(*logger, "show", "the buttons as stored", [shown] { return show(*shown); });
    command->add_option("FOLDER", *shown, "the collection's folder, or the code window's")->required();

    const auto folders = std::make_shared<std::pair<std::string, std::string>>();
    command = line.command(*logger, "resave", "load the buttons and save them",
                           [folders] { return resave(folders->first, folders->second); });
    command->add_option("FOLDER", folders->first, "the collection's folder, or the code window's")
        ->required();
    command->add_option("--to", folders->second, "folder to save into")->required();

    const auto values = std::make_shared<press_values>();
    command = line.command(*logger, "press", "press buttons by a script, on a simulated clock",
                           [values, &line] { return press(*values, line.places()); });
    command->add_option("FOLDER", values->folder, "the folder with the buttons")->required();
    command->add_option("TIMELINE", values->timeline, "the timeline's folder")->required();
    command->add_option("SCRIPT", values->script, "JSON file with the events")->required();
}

}  // namespace vistels
