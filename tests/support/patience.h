// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTest>
#include <QWidget>
#include <functional>

namespace vistels::testing {

// How long a test waits for what is bound to come, on a machine with much to do.
inline constexpr int patience_milliseconds = 60000;

inline bool comes_true(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, patience_milliseconds);
}

inline bool becomes_active(QWidget* window) {
    return QTest::qWaitForWindowActive(window, patience_milliseconds);
}

}  // namespace vistels::testing
