// Runs the conformance suites of the Linux adapters. Needs a display server and a D-Bus session.

#include "platform/linux/x11/X11ClipboardKeeper.h"
#include "tests/conformance/CopyingProgram.h"

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    if (const auto status = clipwren::runClipboardKeeper(argc, argv)) return *status;
    if (const auto status = clipwren::runCopyingProgram(argc, argv)) return *status;
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
