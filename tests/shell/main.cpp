// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <string_view>

#include "support/main_thread_watch.h"
#include "support/second_writer.h"

// Shell tests run without a screen, with one application object for all of them. As the second writer of a
// test the program has no application object at all.
int main(int argument_count, char** arguments) {
    using vistels::testing::run_second_writer;
    if (argument_count == 3 && std::string_view(arguments[1]) == vistels::testing::second_writer_option) {
        return run_second_writer(arguments[2]);
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    vistels::testing::watched_application application(argument_count, arguments);
    testing::InitGoogleTest(&argument_count, arguments);
    return RUN_ALL_TESTS();
}
