// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/program/display_check.h"

namespace vistels {

std::optional<std::string> missing_display(const std::function<std::string(const char*)>& variable) {
    const std::string platform = variable("QT_QPA_PLATFORM");
    const bool needs_display =
        platform.empty() || platform.starts_with("xcb") || platform.starts_with("wayland");
    if (!needs_display) return {};
    if (!variable("DISPLAY").empty() || !variable("WAYLAND_DISPLAY").empty()) return {};
    return "vistels: there is no display to show a window on (DISPLAY and WAYLAND_DISPLAY are not set). "
           "vistels-cli does its work without one; see \"vistels-cli --help\".";
}

}  // namespace vistels
