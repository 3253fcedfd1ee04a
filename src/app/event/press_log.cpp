// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/press_log.h"

#include <utility>

#include "app/settings/state_log.h"
#include "logger/press_engine.h"
#include "util/text_forms.h"

namespace vistels {

namespace {

std::string outcome_text(const button_fired& fired) {
    if (!fired.recorded) return "not recorded yet";
    if (fired.blocked) return "blocked";
    if (fired.dropped) return "its clip is given up";
    if (fired.nothing_to_stamp) return "nothing to stamp";
    if (fired.made == made_kind::trigger) return "trigger";
    return std::string(made_kind_text(fired.made));
}

}  // namespace

std::string fired_text(const button_fired& fired) {
    std::string text = fired.name + (fired.is_down ? " down at " : " up at ");
    append_shortest(text, fired.at);
    if (fired.cause != press_cause::press) text += " (" + std::string(press_cause_text(fired.cause)) + ")";
    const std::string outcome = outcome_text(fired);
    return outcome.empty() ? text : text + ": " + outcome;
}

press_log::press_log(press_engine& engine, home_places places, std::string event, run_loop& loop)
    : engine_(engine),
      places_(std::move(places)),
      event_(std::move(event)),
      loop_(loop),
      fired_(engine.fired.connect([this](const button_fired& fired) { note(fired); })),
      queue_("press log") {}

press_log::~press_log() {
    write();
}

void press_log::note(const button_fired& fired) {
    if (fired.round != round_) write();
    if (line_.empty()) {
        round_ = fired.round;
        const auto* first = engine_.button(fired.first_button);
        const std::string category = first ? first->category() : std::string();
        line_ = event_ + ", round " + std::to_string(round_) + ", " + (first ? first->name() : fired.name) +
                (category.empty() ? "" : " of " + category) + ": ";
        loop_.post(guard_.guarded([this] { write(); }));
    } else {
        line_ += ", ";
    }
    line_ += fired_text(fired);
}

void press_log::write() {
    if (line_.empty()) return;
    queue_.post(
        [places = places_, line = std::exchange(line_, {})] { log_line(places, line, presses_log_name); });
}

}  // namespace vistels
