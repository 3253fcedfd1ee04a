// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <string>

#include "util/failure.h"

namespace vistels {

// What is shown of a failure: its words, and those of its causes, in the user's language. Where there is
// little room, with the names of files alone. Empty for none. Main thread.
QString words_of(const failure& told, shown_paths paths = shown_paths::whole);

// What is shown of a text that the core has as an English one: the name of a step, of a kind of item.
QString words_of_term(const std::string& english);

}  // namespace vistels
