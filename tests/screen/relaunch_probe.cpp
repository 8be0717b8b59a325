// A program that restarts itself once, the way the settings window restarts Clipwren, and ends with some
// delay.
//
//   RELAUNCH_DIARY names the file to which every instance appends "begin PID SECONDS" and "end PID SECONDS",
//   on a clock that all instances share.

#include "platform/linux/qt/QtApplication.h"
#include "settings/SettingsWindow.h"

#include <QApplication>
#include <QTimer>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <thread>

#include <unistd.h>

namespace {

const char* diary() { return std::getenv("RELAUNCH_DIARY"); }

void note(const char* what) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    std::ofstream(diary(), std::ios::app)
        << what << ' ' << getpid() << ' ' << std::chrono::duration<double>(now).count() << std::endl;
}

} // namespace

int main(int argc, char** argv) {
    if (!diary()) return 2;
    const bool isFirst = !std::filesystem::exists(diary());
    note("begin");
    if (isFirst) std::cin.get();
    const QApplication toolkit(argc, argv);
    clipwren::QtApplication application;
    QTimer::singleShot(0, [&] {
        if (isFirst)
            clipwren::SettingsWindow::relaunchApp(application);
        else
            application.terminate();
    });
    const int status = QApplication::exec();
    // The new instance must wait for this, as long as it takes.
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    note("end");
    return status;
}
