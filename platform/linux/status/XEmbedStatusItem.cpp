#include "platform/linux/status/XEmbedStatusItem.h"

#include <QApplication>
#include <QCursor>
#include <QToolTip>

namespace clipwren {

namespace {

constexpr int toolTipDelayMilliseconds = 600;
constexpr int dockingMilliseconds = 3000;

} // namespace

XEmbedStatusItem::XEmbedStatusItem(const StatusItemState& state, X11Connection& connection, SystemTray& tray,
                                   double scale, std::function<void()> refused)
    : state(state),
      tray(tray),
      scale(scale),
      refused(std::move(refused)),
      window(connection, tray, "Clipwren", [this](TrayWindow::Event event) { handle(event); }),
      shownMenu(state.menu) {
    toolTipDelay.setSingleShot(true);
    QObject::connect(&toolTipDelay, &QTimer::timeout, &toolTipDelay, [this] { showToolTip(); });
    dockingDeadline.setSingleShot(true);
    QObject::connect(&dockingDeadline, &QTimer::timeout, &dockingDeadline, [this] {
        if (!window.isDocked()) handle(TrayWindow::Event::thrownOut);
    });
    dockingDeadline.start(dockingMilliseconds);
    tray.setLooksHandler([this] { repaint(); });
    stateDidChange();
}

XEmbedStatusItem::~XEmbedStatusItem() {
    tray.setLooksHandler(nullptr);
    QToolTip::hideText();
}

void XEmbedStatusItem::stateDidChange() {
    // A menu that is open must not outlast the state that it belongs to.
    if (std::exchange(shownMenu, state.menu) != state.menu) menu.close();
    const int width = trayPictureWidth(state, window.size().height(), style());
    if (std::exchange(wantedWidth, width) != width) window.setWantedWidth(width);
    repaint();
}

TrayPictureStyle XEmbedStatusItem::style() {
    auto color = tray.foreground();
    if (!color) {
        const auto lightness = window.backgroundLightness();
        color = lightness && *lightness < 0.5 ? QColor(Qt::white) : QColor(Qt::black);
    }
    return {.color = *color, .face = QApplication::font(), .scale = scale};
}

void XEmbedStatusItem::repaint() {
    if (window.isDocked()) window.show(trayPicture(state, window.size(), style()));
}

void XEmbedStatusItem::handle(TrayWindow::Event event) {
    switch (event) {
    case TrayWindow::Event::resized: return stateDidChange();
    case TrayWindow::Event::exposed: return repaint();
    case TrayWindow::Event::pressed: return click();
    case TrayWindow::Event::entered: return toolTipDelay.start(toolTipDelayMilliseconds);
    case TrayWindow::Event::left: toolTipDelay.stop(); return QToolTip::hideText();
    case TrayWindow::Event::thrownOut: {
        const auto call = refused;
        return call();
    }
    }
}

void XEmbedStatusItem::click() {
    toolTipDelay.stop();
    QToolTip::hideText();
    if (state.menu)
        menu.toggle(*state.menu, window.geometry());
    else if (const auto action = state.action)
        action();
}

void XEmbedStatusItem::showToolTip() {
    if (!menu.isOpen()) QToolTip::showText(QCursor::pos(), QString::fromStdString(state.toolTip));
}

} // namespace clipwren
