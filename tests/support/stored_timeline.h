// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/timeline_builder.h"
#include "timeline/files/sxy_Save_Load.h"
#include "timeline/records/sxy_DATA_root.h"
#include "util/file_system.h"

namespace vistels::testing {

// Makes, in `folder`, a timeline that belongs to no collection: the row "Shot" with the clips "one" (10 to
// 20) and "two" (30 to 45). Gives `folder` back.
inline std::string put_stored_timeline(const std::string& folder) {
    EXPECT_TRUE(make_folders(folder).ok());
    sxy_DATA_root root;
    timeline_edit edit{"made", "", {operation::insert_row{0, row_of("r", "Shot")}}};
    edit.operations.emplace_back(operation::insert_clip{shared_text("r"), clip_of("one", 10, 20)});
    edit.operations.emplace_back(operation::insert_clip{shared_text("r"), clip_of("two", 30, 45)});
    change_set touched;
    EXPECT_TRUE(apply_edit(root, edit, touched).ok());
    EXPECT_TRUE(save_timeline(root.snapshot(), folder).ok());
    return folder;
}

}  // namespace vistels::testing
