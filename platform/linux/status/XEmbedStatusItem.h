#pragma once

#include "platform/linux/status/StatusItemState.h"
#include "platform/linux/status/StatusMenu.h"
#include "platform/linux/status/SystemTray.h"
#include "platform/linux/status/TrayPicture.h"
#include "platform/linux/status/TrayWindow.h"

#include <QTimer>

#include <functional>
#include <memory>

namespace clipwren {

// The status item as a window of our own in the X server's system tray: text, picture, menu and tooltip are
// all ours. Every mouse button is a click. Main thread only.
class XEmbedStatusItem final : public StatusItemView {
public:
    // The tray has a manager and outlives this object. `refused` runs once, from the event loop, when the
    // tray does not take the window within some seconds or throws it out; it may destroy this object.
    XEmbedStatusItem(const StatusItemState& state, X11Connection& connection, SystemTray& tray, double scale,
                     std::function<void()> refused);
    ~XEmbedStatusItem() override;

    void stateDidChange() override;

private:
    void handle(TrayWindow::Event event);
    void repaint();
    void click();
    void showToolTip();
    void open();
    void checkDocking();
    TrayPictureStyle style();

    const StatusItemState& state;
    X11Connection& connection;
    SystemTray& tray;
    const double scale;
    const std::function<void()> refused;
    std::unique_ptr<TrayWindow> window; // none between two attempts
    StatusMenu menu;
    std::shared_ptr<const Menu> shownMenu;
    int wantedWidth = 0;
    QTimer toolTipDelay;
    QTimer docking;
    int attempts = 0; // since the window was last taken in
};

} // namespace clipwren
