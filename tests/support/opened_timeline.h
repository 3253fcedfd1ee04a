// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "timeline/files/timeline_document.h"

namespace vistels::testing {

// Opens the timeline in `folder`; null, and a failure of the test, when it cannot be.
inline std::unique_ptr<timeline_document> opened(const std::string& folder, run_loop& loop,
                                                 file_system& files = machine_files()) {
    auto document = timeline_document::open(folder, loop, files);
    EXPECT_TRUE(document) << document.message();
    return document ? std::move(document).value() : nullptr;
}

}  // namespace vistels::testing
