// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logger/button_key_binding.h"

class QKeyEvent;

namespace vistels {

// The key of an event as the code window's bindings know keys.
key_stroke key_stroke_of(const QKeyEvent& event);

}  // namespace vistels
