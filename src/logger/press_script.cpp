// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/press_script.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>

#include "logger/logger_failures.h"
#include "util/text_forms.h"

namespace vistels {

namespace {

constexpr double most_seconds = 1e9;  // some thirty years

std::optional<press_step::kind> kind_named(const std::string& name) {
    if (name == "down") return press_step::kind::down;
    if (name == "up") return press_step::kind::up;
    if (name == "tab") return press_step::kind::tab;
    if (name == "end") return press_step::kind::end;
    return std::nullopt;
}

// Null when there is none.
const markup_Button_Item* find_button(const std::vector<button_record>& all,
                                      const std::string& uuid_or_name) {
    const auto with = [&](auto text_of) {
        return std::find_if(all.begin(), all.end(),
                            [&](const auto& button) { return text_of(*button) == uuid_or_name; });
    };
    auto found = with([](const auto& button) { return button.uuid(); });
    if (found == all.end()) found = with([](const auto& button) { return button.name(); });
    return found == all.end() ? nullptr : &**found;
}

// The failure says what is wrong with one step, without the file's name.
result<press_step> read_step(const property_value& value, const std::vector<button_record>& buttons) {
    const auto* stored = value.dictionary();
    const auto at = stored ? stored->number("at") : std::nullopt;
    if (!at || !std::isfinite(*at)) return script_event_has_no_time();
    if (std::abs(*at) > most_seconds) return script_event_is_too_late();
    const auto what = kind_named(stored->text_or_empty("do"));
    if (!what) return script_event_does_nothing();
    press_step step{*at, *what, {}};
    if (*what == press_step::kind::down || *what == press_step::kind::up) {
        const std::string named = stored->text_or_empty("button");
        const auto* button = find_button(buttons, named);
        if (!button) return script_event_has_no_button(named);
        step.button = button->uuid();
    }
    return step;
}

// Without what surrounds it.
std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// "12.5 Goal down"
result<press_step> read_line(std::string_view line, const std::vector<button_record>& buttons) {
    const auto time_end = std::min(line.find_first_of(" \t"), line.size());
    const auto what_begin = line.find_last_of(" \t");
    const auto at = number_from_text(line.substr(0, time_end));
    if (!at || !std::isfinite(*at)) return script_line_has_no_time();
    if (std::abs(*at) > most_seconds) return script_event_is_too_late();
    const auto what = what_begin == std::string_view::npos
                          ? std::nullopt
                          : kind_named(std::string(line.substr(what_begin + 1)));
    if (!what) return script_line_does_nothing();
    press_step step{*at, *what, {}};
    const std::string named(trimmed(line.substr(time_end, what_begin + 1 - time_end)));
    const bool has_button = *what == press_step::kind::down || *what == press_step::kind::up;
    if (!has_button) return step;
    const auto* button = find_button(buttons, named);
    if (!button) return script_event_has_no_button(named);
    step.button = button->uuid();
    return step;
}

}  // namespace

result<std::vector<press_step>> read_press_lines(const std::string& text,
                                                 const std::vector<button_record>& buttons) {
    std::vector<press_step> steps;
    std::size_t number = 0;
    for (std::size_t begin = 0; begin <= text.size();) {
        const auto end = std::min(text.find('\n', begin), text.size());
        const auto line = trimmed(std::string_view(text).substr(begin, end - begin));
        begin = end + 1;
        ++number;
        if (line.empty()) continue;
        auto step = read_line(line, buttons);
        if (!step) return script_line_is_wrong(number, step.error());
        if (!steps.empty() && step.value().at < steps.back().at)
            return script_line_is_wrong(number, script_events_do_not_ascend());
        steps.push_back(std::move(step).value());
    }
    return steps;
}

std::string press_lines(const std::vector<button_record>& buttons, double first) {
    constexpr double held_seconds = 2;
    constexpr double apart_seconds = 5;
    std::string text;
    for (const auto& button : buttons) {
        for (const bool is_down : {true, false}) {
            append_shortest(text, is_down ? first : first + held_seconds);
            text += " " + button->name() + (is_down ? " down\n" : " up\n");
        }
        first += apart_seconds;
    }
    return text;
}

result<std::vector<press_step>> read_press_script(const property_value& document,
                                                  const std::vector<button_record>& buttons,
                                                  const std::string& path) {
    const auto* values = document.dictionary();
    const auto* stored = values ? values->array("events") : nullptr;
    if (!stored) return script_has_no_events(path);
    std::vector<press_step> steps;
    for (const auto& value : *stored) {
        auto step = read_step(value, buttons);
        if (!step) return script_event_is_wrong(path, steps.size() + 1, step.error());
        if (!steps.empty() && step.value().at < steps.back().at) {
            return script_event_is_wrong(path, steps.size() + 1, script_events_do_not_ascend());
        }
        steps.push_back(std::move(step).value());
    }
    return steps;
}

double run_press_script(press_engine& engine, const std::vector<press_step>& steps,
                        simulated_run_loop& loop) {
    const double first = steps.empty() ? 0 : steps.front().at;
    // Without pictures the clock itself is what runs.
    engine.follow_playing(first, true);
    const auto tick_at = [&](double at) {
        if (at - first > loop.time().seconds()) loop.advance_to(at - first);
        engine.tick(at);
    };
    for (const auto& step : steps) {
        for (auto due = engine.next_due(); due && *due <= step.at; due = engine.next_due()) {
            tick_at(*due);
        }
        tick_at(step.at);
        if (step.what == press_step::kind::down) engine.press(step.button, step.at);
        if (step.what == press_step::kind::up) engine.release(step.button, step.at);
        if (step.what == press_step::kind::tab) engine.tab(step.at);
        if (step.what == press_step::kind::end) return step.at;
    }
    return steps.empty() ? 0 : steps.back().at;
}

}  // namespace vistels
