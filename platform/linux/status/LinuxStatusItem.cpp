#include "platform/linux/status/LinuxStatusItem.h"

#include "platform/linux/status/SniStatusItem.h"
#include "platform/linux/status/XEmbedStatusItem.h"

#include <QCoreApplication>
#include <QDBusConnection>

#include <utility>

namespace clipwren {

namespace {

// Panels come up together with programs that are launched at login.
constexpr int panelWaitMilliseconds = 6000;

} // namespace

LinuxStatusItem::LinuxStatusItem(X11Connection& display, double scale, std::function<void()> nowhereToBeSeen)
    : display(display),
      scale(scale),
      habits(panelHabits(qgetenv("XDG_CURRENT_DESKTOP").toStdString())),
      tray(display, [this] { panelsDidChange(TrayKind::window); }),
      host(QDBusConnection::sessionBus(), [this] { panelsDidChange(TrayKind::item); }) {
    deadline.setSingleShot(true);
    QObject::connect(&deadline, &QTimer::timeout, &deadline,
                     [this, nowhereToBeSeen = std::move(nowhereToBeSeen)] {
                         if (!view) nowhereToBeSeen();
                     });
    deadline.start(panelWaitMilliseconds);
    // The item may outlive the event loop by the work that still goes on; the panel must not show it then.
    QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &deadline,
                     [this] { view.reset(); });
    stateDidChange();
}

LinuxStatusItem::~LinuxStatusItem() = default;

void LinuxStatusItem::setSymbolImage(const std::string& symbolName,
                                     const std::string& accessibilityDescription) {
    state.symbolName = symbolName;
    state.accessibilityDescription = accessibilityDescription;
    stateDidChange();
}

void LinuxStatusItem::setContentTint(std::optional<Tint> tint) {
    state.tint = tint;
    stateDidChange();
}

void LinuxStatusItem::setImagePosition(ImagePosition position) {
    state.imagePosition = position;
    stateDidChange();
}

void LinuxStatusItem::setAttributedTitle(const AttributedTitle& title) {
    state.title = title;
    stateDidChange();
}

void LinuxStatusItem::setToolTip(const std::string& text) {
    state.toolTip = text;
    stateDidChange();
}

void LinuxStatusItem::setMenu(std::shared_ptr<const Menu> menu) {
    state.menu = std::move(menu);
    stateDidChange();
}

void LinuxStatusItem::setAction(std::function<void()> action) {
    state.action = std::move(action);
    stateDidChange();
}

// The panel is told once of changes that come together.
void LinuxStatusItem::stateDidChange() {
    if (std::exchange(updatePending, true)) return;
    QMetaObject::invokeMethod(
        &deadline,
        [this] {
            updatePending = false;
            if (view)
                view->stateDidChange();
            else
                choose();
        },
        Qt::QueuedConnection);
}

// A panel that has come anew knows nothing of the old view.
void LinuxStatusItem::panelsDidChange(TrayKind which) {
    if (which == TrayKind::window) windowRefused = false;
    if (which == shownAs) {
        view.reset();
        shownAs = TrayKind::none;
    }
    choose();
}

void LinuxStatusItem::choose() {
    const TrayKind best = chooseTray(
        {.hasWindowTray = tray.manager() != XCB_NONE && !windowRefused, .hasItemHost = host.isPresent()},
        habits);
    if (best == shownAs) return;
    // Never two at once.
    view.reset();
    shownAs = best;
    if (best == TrayKind::item)
        view = std::make_unique<SniStatusItem>(state, QDBusConnection::sessionBus(),
                                               !habits.labelReplacesPicture);
    else if (best == TrayKind::window)
        view = std::make_unique<XEmbedStatusItem>(state, display, tray, scale, [this] {
            windowRefused = true;
            choose();
        });
}

} // namespace clipwren
