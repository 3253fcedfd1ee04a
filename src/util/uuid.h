// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace vistels {

// A new random UUID as text, upper case, with hyphens. Any thread.
std::string new_uuid();

}  // namespace vistels
