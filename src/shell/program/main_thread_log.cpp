// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/program/main_thread_log.h"

#include <string>
#include <utility>

#include "app/settings/state_log.h"

namespace vistels {

main_thread_log::main_thread_log(home_places places) : places_(std::move(places)) {
    listen(this);
}

main_thread_log::~main_thread_log() {
    listen(nullptr);
}

void main_thread_log::ended(const wait_note& note, double seconds) {
    if (seconds < noticed_seconds || std::this_thread::get_id() != thread_) return;
    std::string line = "The window waited " + std::to_string(seconds) + " s: " + note.call();
    if (const std::string subject = note.subject(); !subject.empty()) line += " \"" + subject + "\"";
    if (note.expected()) line += std::string(" (") + note.expected() + ")";
    queue_.post([this, line = std::move(line)] { log_line(places_, line); });
}

}  // namespace vistels
