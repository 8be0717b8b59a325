// Shows a status item in whatever panel there is, apart from the rest of the program. Reads one command a
// line from standard input (`idle`, `recording TEXT`, `encoding`) and writes what the user does to standard
// output: `chose TITLE` for a line of the menu, `clicked` for a click while there is none. Ends with its
// input.

#include "platform/linux/status/LinuxStatusBar.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Screens.h"

#include <QApplication>
#include <QSocketNotifier>

#include <iostream>
#include <string>
#include <unistd.h>

namespace clipwren {

namespace {

MenuItem line(std::string title, std::string key = {}) {
    const std::string said = title;
    return {.title = std::move(title),
            .action = [said] { std::cout << "chose " << said << std::endl; },
            .keyEquivalent = std::move(key)};
}

std::shared_ptr<const Menu> makeMenu() {
    const MenuItem separator{.isSeparator = true};
    return std::make_shared<const Menu>(
        Menu{{line("Record Region  (⌘⇧G)"), line("Open GIF Folder"), separator, line("Settings…"), separator,
              line("Quit Clipwren", "q")}});
}

void obey(StatusItem& item, const std::shared_ptr<const Menu>& menu, const std::string& command) {
    const std::string recording = "recording ";
    const bool isRecording = command.starts_with(recording);
    item.setSymbolImage(isRecording             ? "record.circle.fill"
                        : command == "encoding" ? "arrow.triangle.2.circlepath"
                                                : "record.circle",
                        "Clipwren");
    item.setContentTint(isRecording ? std::optional(Tint::systemRed) : std::nullopt);
    item.setImagePosition(isRecording ? ImagePosition::imageRight : ImagePosition::imageOnly);
    item.setAttributedTitle({isRecording ? command.substr(recording.size()) : "",
                             {.size = 12, .weight = FontWeight::medium, .monospacedDigits = true}});
    item.setMenu(isRecording ? nullptr : menu);
    if (isRecording)
        item.setAction([] { std::cout << "clicked" << std::endl; });
    else
        item.setAction(nullptr);
    item.setToolTip(isRecording ? "Stop recording" : "Clipwren");
}

} // namespace

} // namespace clipwren

int main(int argc, char** argv) {
    using namespace clipwren;
    std::ios::sync_with_stdio(false);
    qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const auto connection = X11Connection::open();
    if (!connection) return 1;
    const X11Screens screens(**connection);
    LinuxStatusBar statusBar(**connection, screens);
    const auto item = statusBar.makeStatusItem();
    const auto menu = makeMenu();
    obey(*item, menu, "idle");

    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        do {
            std::string command;
            if (!std::getline(std::cin, command)) return QApplication::quit();
            obey(*item, menu, command);
        } while (std::cin.rdbuf()->in_avail() > 0);
    });
    std::cout << "ready" << std::endl;
    return QApplication::exec();
}
