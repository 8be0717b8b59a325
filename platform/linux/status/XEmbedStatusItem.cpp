#include "platform/linux/status/XEmbedStatusItem.h"

#include <QApplication>
#include <QCursor>
#include <QToolTip>

namespace clipwren {

namespace {

constexpr int toolTipDelayMilliseconds = 600;
// The time until a window counts as not taken in, which doubles from one attempt to the next: panels that
// have just come up at login are slow.
constexpr int dockingMilliseconds = 1000;
constexpr int mostAttempts = 4;

} // namespace

XEmbedStatusItem::XEmbedStatusItem(const StatusItemState& state, X11Connection& connection, SystemTray& tray,
                                   double scale, std::function<void()> refused)
    : state(state),
      connection(connection),
      tray(tray),
      scale(scale),
      refused(std::move(refused)),
      shownMenu(state.menu) {
    toolTipDelay.setSingleShot(true);
    QObject::connect(&toolTipDelay, &QTimer::timeout, &toolTipDelay, [this] { showToolTip(); });
    docking.setSingleShot(true);
    QObject::connect(&docking, &QTimer::timeout, &docking, [this] { checkDocking(); });
    tray.setLooksHandler([this] { repaint(); });
    open();
}

XEmbedStatusItem::~XEmbedStatusItem() {
    tray.setLooksHandler(nullptr);
    QToolTip::hideText();
}

void XEmbedStatusItem::stateDidChange() {
    // A menu that is open must not outlast the state that it belongs to.
    if (std::exchange(shownMenu, state.menu) != state.menu) menu.close();
    if (!window) return;
    const int width = trayPictureWidth(state, window->size().height(), style());
    if (std::exchange(wantedWidth, width) != width) window->setWantedWidth(width);
    repaint();
}

TrayPictureStyle XEmbedStatusItem::style() {
    auto color = tray.foreground();
    if (!color) {
        const auto lightness = window->backgroundLightness();
        color = lightness && *lightness < 0.5 ? QColor(Qt::white) : QColor(Qt::black);
    }
    return {.color = *color, .face = QApplication::font(), .scale = scale};
}

void XEmbedStatusItem::repaint() {
    if (window && window->isDocked()) window->show(trayPicture(state, window->size(), style()));
}

void XEmbedStatusItem::handle(TrayWindow::Event event) {
    switch (event) {
    case TrayWindow::Event::resized: return stateDidChange();
    case TrayWindow::Event::exposed: return repaint();
    case TrayWindow::Event::pressed: return click();
    case TrayWindow::Event::entered: return toolTipDelay.start(toolTipDelayMilliseconds);
    case TrayWindow::Event::left: toolTipDelay.stop(); return QToolTip::hideText();
    case TrayWindow::Event::thrownOut:
        // A panel that ends does this too, and says so next.
        window.reset();
        return docking.start(dockingMilliseconds);
    }
}

// Each time with another window: a tray may still know the number of this one from a program that has just
// ended, and takes the old window's end for that of the new one.
void XEmbedStatusItem::open() {
    window = std::make_unique<TrayWindow>(connection, tray, "Clipwren",
                                          [this](TrayWindow::Event event) { handle(event); });
    wantedWidth = 0;
    docking.start(dockingMilliseconds << attempts++);
    stateDidChange();
}

void XEmbedStatusItem::checkDocking() {
    if (window && window->isDocked()) {
        attempts = 0;
        return;
    }
    if (attempts < mostAttempts) return open();
    const auto call = refused;
    call();
}

void XEmbedStatusItem::click() {
    toolTipDelay.stop();
    QToolTip::hideText();
    if (state.menu)
        menu.toggle(*state.menu, window->geometry());
    else if (const auto action = state.action)
        action();
}

void XEmbedStatusItem::showToolTip() {
    if (!menu.isOpen()) QToolTip::showText(QCursor::pos(), QString::fromStdString(state.toolTip));
}

} // namespace clipwren
