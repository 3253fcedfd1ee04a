// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "input/x_server.h"
#include "support/main_thread_watch.h"

// Tests with a real keyboard and mouse, of an X server of their own.
int main(int argument_count, char** arguments) {
    testing::InitGoogleTest(&argument_count, arguments);
    if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
    vistels::testing::x_server server;
    vistels::testing::x_server::use(&server);
    qputenv("DISPLAY", server.display().c_str());
    qputenv("QT_QPA_PLATFORM", "xcb");
    qputenv("QT_XCB_GL_INTEGRATION", "none");
    vistels::testing::watched_application application(argument_count, arguments);
    return RUN_ALL_TESTS();
}
