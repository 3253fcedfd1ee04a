// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/logger_commands.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "app/event/timeline_links.h"
#include "cli/command_failures.h"
#include "logger/code_window.h"
#include "logger/press_engine.h"
#include "timeline/files/timeline_document.h"
#include "util/json.h"
#include "util/safe_write.h"
#include "util/simulated_run_loop.h"
#include "video/vault_lock.h"
#include "video/video_coll_Records.h"

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
    const auto loaded = load_code_window(from);
    if (!loaded) return loaded.error();
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

enum class script_action { down, up, tab, end };

struct script_event {
    double at = 0;
    script_action action = script_action::end;
    std::string button;  // UUID
};

std::optional<script_action> action_named(const std::string& name) {
    if (name == "down") return script_action::down;
    if (name == "up") return script_action::up;
    if (name == "tab") return script_action::tab;
    if (name == "end") return script_action::end;
    return std::nullopt;
}

using buttons = std::vector<button_record>;

// The first with that UUID, else the first with that name; null when there is none.
const markup_Button_Item* find_button(const buttons& all, const std::string& uuid_or_name) {
    const auto with = [&](auto text_of) {
        return std::find_if(all.begin(), all.end(),
                            [&](const auto& button) { return text_of(*button) == uuid_or_name; });
    };
    auto found = with([](const auto& button) { return button.uuid(); });
    if (found == all.end()) found = with([](const auto& button) { return button.name(); });
    return found == all.end() ? nullptr : &**found;
}

// The failure says what is wrong with one event, without the file's name.
result<script_event> read_event(const property_value& value, const buttons& all) {
    const auto* stored = value.dictionary();
    const auto at = stored ? stored->number("at") : std::nullopt;
    if (!at || !std::isfinite(*at)) return script_event_has_no_time();
    if (std::abs(*at) > most_stored_seconds) return script_event_is_too_late();
    const auto action = action_named(stored->text_or_empty("do"));
    if (!action) return script_event_does_nothing();
    script_event event{*at, *action, {}};
    if (*action == script_action::down || *action == script_action::up) {
        const std::string named = stored->text_or_empty("button");
        const auto* button = find_button(all, named);
        if (!button) return script_event_has_no_button(named);
        event.button = button->uuid();
    }
    return event;
}

result<std::vector<script_event>> read_script(const std::string& path, const buttons& all) {
    const auto bytes = read_file(path);
    if (!bytes) return bytes.error();
    const auto read = read_json(bytes.value(), path);
    if (!read) return read.error();
    const auto* document = read.value().dictionary();
    const auto* stored = document ? document->array("events") : nullptr;
    if (!stored) return script_has_no_events(path);
    std::vector<script_event> events;
    for (const auto& value : *stored) {
        auto event = read_event(value, all);
        if (!event) return script_event_is_wrong(path, events.size() + 1, event.error());
        if (!events.empty() && event.value().at < events.back().at) {
            return script_event_is_wrong(path, events.size() + 1, script_events_do_not_ascend());
        }
        events.push_back(std::move(event).value());
    }
    return events;
}

property_dictionary fired_entry(const button_fired& fired) {
    property_dictionary entry;
    entry.add("at", fired.at);
    entry.add("button", fired.button);
    entry.add("name", fired.name);
    entry.add("state", fired.is_down ? "down" : "up");
    entry.add("cause", press_cause_text(fired.cause));
    entry.add("blocked", fired.blocked);
    const bool made = fired.made != made_kind::nothing;
    entry.add("made", made ? property_value(made_kind_text(fired.made)) : property_value());
    return entry;
}

// Runs the script on the loop's clock, which stands at the first event's time when it begins. Returns when it
// ended.
double run_script(press_engine& engine, const std::vector<script_event>& events, simulated_run_loop& loop) {
    const double first = events.empty() ? 0 : events.front().at;
    const auto tick_at = [&](double at) {
        loop.advance_to(at - first);
        engine.tick(at);
    };
    for (const auto& event : events) {
        for (auto due = engine.next_auto_up(); due && *due <= event.at; due = engine.next_auto_up()) {
            tick_at(*due);
        }
        tick_at(event.at);
        if (event.action == script_action::down) engine.press(event.button, event.at);
        if (event.action == script_action::up) engine.release(event.button, event.at);
        if (event.action == script_action::tab) engine.tab(event.at);
        if (event.action == script_action::end) return event.at;
    }
    return events.empty() ? 0 : events.back().at;
}

struct press_values {
    std::string folder, timeline, script;
};

result<command_outcome> press(const press_values& values, const home_places& places) {
    auto loaded = load_button_dict(logger_folder_of(values.folder));
    if (!loaded) return loaded.error();
    const auto events = read_script(values.script, loaded.value().buttons);
    if (!events) return events.error();
    // The timeline's own timers stand still: between two events may be years, and it is saved in the end.
    simulated_run_loop standing;
    simulated_run_loop loop;
    auto opened = open_linked_timeline(values.timeline, places, standing);
    if (!opened) return opened.error();
    auto& document = *opened.value();
    press_engine engine(document, loop.time());
    engine.set_buttons(std::move(loaded).value().buttons, 0);

    property_array fired;
    auto reporting =
        engine.fired.connect([&fired](const button_fired& one) { fired.emplace_back(fired_entry(one)); });
    const double ended_at = run_script(engine, events.value(), loop);
    reporting.disconnect();
    property_array down;
    for (const auto& one : engine.down_buttons()) down.emplace_back(one.button);
    // No press is lost: what is still down makes its clip up to the end of the script.
    engine.release_all(ended_at);
    if (auto recorded = engine.record_waiting(); !recorded) return recorded.error();
    if (auto saved = document.save_now(); !saved) return saved.error();
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
