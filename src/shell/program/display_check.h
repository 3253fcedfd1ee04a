// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace vistels {

// Why no window can be shown, or nothing when one can (as far as the environment tells). `variable` gives the
// value of an environment variable, empty when it is not set. To be asked before the application object is
// made, which ends the process when there is no display.
std::optional<std::string> missing_display(const std::function<std::string(const char*)>& variable);

}  // namespace vistels
