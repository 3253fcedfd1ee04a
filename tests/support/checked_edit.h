// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/timeline_builder.h"

namespace vistels::testing {

// Applies the edit and takes it back, with the state compared; the timeline is left with the edit done.
inline void apply_and_check(sxy_DATA_root& timeline, const result<timeline_edit>& edit) {
    ASSERT_TRUE(edit) << edit.message();
    const auto before = state_text(timeline);
    change_set touched;
    auto back = apply_edit(timeline, edit.value(), touched);
    ASSERT_TRUE(back) << back.message();
    const auto after = state_text(timeline);
    auto again = apply_edit(timeline, back.value(), touched);
    ASSERT_TRUE(again) << again.message();
    EXPECT_EQ(state_text(timeline), before);
    ASSERT_TRUE(apply_edit(timeline, again.value(), touched));
    EXPECT_EQ(state_text(timeline), after);
}

}  // namespace vistels::testing
