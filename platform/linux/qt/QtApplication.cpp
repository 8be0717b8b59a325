#include "platform/linux/qt/QtApplication.h"

#include "platform/linux/LocalClock.h"
#include "platform/linux/OwnExecutable.h"

#include <QApplication>
#include <QPointer>
#include <QProcess>
#include <QWidget>
#include <QWindow>

#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace clipwren {

namespace {

// By the focus rather than by Qt's application state: that one stays "active" when a window is closed while
// it has the focus, as message boxes are, and then says nothing when the user comes back.
class FocusObserver : public ActivationObserver {
public:
    explicit FocusObserver(std::function<void()> handler) {
        const auto focusChanged =
            [handler = std::move(handler),
             last = QPointer<QWindow>(QGuiApplication::focusWindow())](QWindow* focused) mutable {
                const bool wasAway = !last || !last->isVisible();
                last = focused;
                if (focused && wasAway) handler();
            };
        connection = QObject::connect(qGuiApp, &QGuiApplication::focusWindowChanged, qGuiApp, focusChanged);
    }
    ~FocusObserver() override { QObject::disconnect(connection); }

private:
    QMetaObject::Connection connection;
};

} // namespace

void QtApplication::setActivationPolicy(ActivationPolicy) {}

void QtApplication::activateIgnoringOtherApps() {
    const auto widgets = QApplication::topLevelWidgets();
    for (QWidget* window : widgets) {
        if (!window->isVisible() || window->windowType() == Qt::ToolTip) continue;
        window->raise();
        window->activateWindow();
    }
}

// Later rather than at once, so that it also ends a loop that has not begun yet.
void QtApplication::terminate() {
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
}

std::unique_ptr<ActivationObserver> QtApplication::observeDidBecomeActive(std::function<void()> handler) {
    return std::make_unique<FocusObserver>(std::move(handler));
}

BundleFacts QtApplication::bundleFacts() const {
    BundleFacts facts{.identifier = "app.clipwren.Clipwren", .shortVersion = CLIPWREN_VERSION};
#ifdef CLIPWREN_BUILD_NUMBER
    facts.version = CLIPWREN_BUILD_NUMBER;
#endif
    struct stat status{};
    if (stat(ownExecutable().c_str(), &status) == 0)
        facts.executableModificationTime = localTime(status.st_mtime);
    return facts;
}

std::int32_t QtApplication::processIdentifier() const { return getpid(); }

// The shell makes way for the program instead of waiting beside it.
std::string QtApplication::launchCommand() const { return "exec " + shellQuoted(ownExecutable().string()); }

void QtApplication::startShellCommand(const std::string& command) {
    QProcess::startDetached(QStringLiteral("/bin/sh"),
                            {QStringLiteral("-c"), QString::fromStdString(command)});
}

} // namespace clipwren
