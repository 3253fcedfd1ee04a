// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "app/event/open_event.h"
#include "logger/press_engine.h"

namespace vistels::testing {

// The first button that makes clips.
inline const markup_Button_Item& clip_button(open_event& opened) {
    const auto& buttons = opened.logger().buttons();
    const auto found = std::find_if(buttons.begin(), buttons.end(),
                                    [](const auto& one) { return one->is(button_type::clip); });
    EXPECT_NE(found, buttons.end());
    return **found;
}

// Presses that button and releases it; the times are the collection's.
inline void code(open_event& opened, double from, double to) {
    const std::string button = clip_button(opened).uuid();
    EXPECT_TRUE(opened.logger().press(button, from));
    EXPECT_TRUE(opened.logger().release(button, to));
}

}  // namespace vistels::testing
