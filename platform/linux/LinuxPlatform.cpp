#include "platform/linux/LinuxPlatform.h"

#include "platform/linux/IniStore.h"
#include "platform/linux/LinuxMemory.h"
#include "platform/linux/OwnExecutable.h"
#include "platform/linux/PosixFiles.h"
#include "platform/linux/SyslogLog.h"
#include "platform/linux/ThreadBackgroundQueue.h"
#include "platform/linux/UnaskedEnd.h"
#include "platform/linux/XdgFolders.h"
#include "platform/linux/XdgLoginItem.h"
#include "platform/linux/qt/DBusWorkspace.h"
#include "platform/linux/qt/QtAlerts.h"
#include "platform/linux/qt/QtApplication.h"
#include "platform/linux/qt/QtCanvas.h"
#include "platform/linux/qt/QtMainQueue.h"
#include "platform/linux/qt/QtSettingsView.h"
#include "platform/linux/qt/X11Pasteboard.h"
#include "platform/linux/session/LinuxSession.h"
#include "platform/linux/status/LinuxStatusBar.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11HotKeys.h"
#include "platform/linux/x11/X11ScreenCapture.h"
#include "platform/linux/x11/X11Screens.h"
#include "platform/linux/x11/X11Windows.h"

#include <QApplication>
#include <QIcon>

#include <utility>

namespace clipwren {

namespace {

const QString applicationIdentifier = QStringLiteral("app.clipwren.Clipwren");

const Alert noScreenInWayland{
    .messageText = "Clipwren cannot see this screen",
    .informativeText =
        "This is a Wayland session, which shows X11 programs nothing but each other, and no permission "
        "can change that. To record, log out and choose an X11 (Xorg) session at login."};

// Asked before the toolkit, which would end the process with a message of its own.
bool displayAnswers() {
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const bool answers = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return answers;
}

// What would keep the item from the panel at the start: reading the icon theme and the fonts takes the
// toolkit longer than everything before.
constexpr double warmUpDelay = 0.3;

// Gives windows their icon, and paints once what the badge and the selector are made of: the toolkit loads
// its fonts now, not when the user waits for the first selection.
void warmUp(Canvases& canvases) {
    // The icon of the theme once the program is installed, and its own before.
    QApplication::setWindowIcon(QIcon::fromTheme(
        applicationIdentifier, QIcon(QStringLiteral(":/clipwren/128x128/apps/app.clipwren.Clipwren.png"))));
    const auto canvas = canvases.makeBitmap({64, 32});
    if (!canvas) return;
    const Font font{.size = 11, .weight = FontWeight::semibold, .kern = 0.4};
    canvas->fillRoundedRectangle({0, 0, 64, 32}, 16, Color::black(0.5));
    canvas->fillOval({4, 4, 8, 8}, Color::white());
    canvas->drawText("clipwren", {16, 4}, font, Color::white());
}

} // namespace

// In the order in which they are made; the last made goes first.
struct LinuxPlatform::Parts {
    explicit Parts(std::unique_ptr<QApplication> toolkit, std::unique_ptr<X11Connection> display)
        : toolkit(std::move(toolkit)),
          display(std::move(display)) {
        screenCapture.explainDenial = [this] { alerts.runModal(noScreenInWayland); };
    }

    ~Parts() {
        // Threads report to the main queue, and what waits there may hold objects of the core, which need the
        // ports until they are gone.
        screenCapture.endStreams();
        backgroundQueue.finish();
        mainQueue.clear();
    }

    const std::unique_ptr<QApplication> toolkit;
    const std::unique_ptr<X11Connection> display;
    SyslogLog log;
    PosixFiles files;
    XdgFolders folders;
    IniStore store{folders.configuration() / "clipwren" / "clipwren.ini"};
    XdgLoginItem loginItem{folders.configuration(), ownExecutable()};
    LinuxMemory memory;
    QtMainQueue mainQueue;
    ThreadBackgroundQueue backgroundQueue;
    QtApplication application;
    QtAlerts alerts{log};
    QtCanvases canvases;
    X11Screens screens{*display};
    X11HotKeys hotKeys{*display};
    X11Windows windows{*display, screens}; // after the hot keys, which go on while it holds the keyboard
    X11ScreenCapture screenCapture{*display, mainQueue};
    LinuxSession session{*display};
    X11Pasteboard pasteboard;
    DBusWorkspace workspace;
    LinuxStatusBar statusBar{*display, screens};
    QtSettingsViews settingsViews;

    const Platform ports{alerts,        application, backgroundQueue, canvases,      files,     folders,
                         hotKeys,       log,         loginItem,       mainQueue,     memory,    pasteboard,
                         screenCapture, screens,     session,         settingsViews, statusBar, store,
                         windows,       workspace};
};

Expected<std::unique_ptr<LinuxPlatform>, PlatformError> LinuxPlatform::connect(int& argc, char** argv) {
    if (!displayAnswers())
        return Unexpected{
            PlatformError{"no display can be reached; is DISPLAY set? Clipwren needs an X11 desktop"}};
    // The display is this one even where the session offers another.
    qputenv("QT_QPA_PLATFORM", "xcb");
    // A session manager would start the program again with options of the toolkit, beside the login item.
    qunsetenv("SESSION_MANAGER");
    QCoreApplication::setApplicationName(QStringLiteral("clipwren"));
    QApplication::setQuitOnLastWindowClosed(false);
    auto toolkit = std::make_unique<QApplication>(argc, argv);
    QGuiApplication::setDesktopFileName(applicationIdentifier);
    auto display = X11Connection::open();
    if (!display) return Unexpected{display.error()};
    auto parts = std::make_unique<Parts>(std::move(toolkit), std::move(*display));
    return std::unique_ptr<LinuxPlatform>(new LinuxPlatform(std::move(parts)));
}

LinuxPlatform::LinuxPlatform(std::unique_ptr<Parts> parts) : parts(std::move(parts)) {}

LinuxPlatform::~LinuxPlatform() = default;

const Platform& LinuxPlatform::ports() const { return parts->ports; }

int LinuxPlatform::run(std::function<void()> endsUnasked) {
    UnaskedEnd unaskedEnd(std::move(endsUnasked), [this] { parts->backgroundQueue.finish(); });
    parts->display->setLossHandler([&unaskedEnd] { unaskedEnd.displayIsLost(); });
    parts->mainQueue.asyncAfter(warmUpDelay, [this, &unaskedEnd] {
        warmUp(parts->canvases);
        parts->session.listen();
        unaskedEnd.watchExit();
    });
    const int status = QApplication::exec();
    parts->display->setLossHandler(nullptr);
    parts->pasteboard.leaveBehind();
    return status;
}

} // namespace clipwren
