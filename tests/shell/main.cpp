// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QApplication>

// Shell tests run without a screen, with one application object for all of them.
int main(int argument_count, char** arguments) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argument_count, arguments);
    testing::InitGoogleTest(&argument_count, arguments);
    return RUN_ALL_TESTS();
}
