// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTest>
#include <string>

#include "shell/window/event_opener.h"
#include "shell/window/main_window.h"

namespace vistels::testing {

// What was asked of the opener is done: the event is open, or it was told why not.
inline bool has_opened(main_window& window) {
    constexpr int most_milliseconds = 60000;
    return QTest::qWaitFor([&] { return !window.opener().is_at_work(); }, most_milliseconds);
}

inline bool open_and_wait(main_window& window, const std::string& folder) {
    window.opener().open_folder(folder);
    return has_opened(window);
}

}  // namespace vistels::testing
