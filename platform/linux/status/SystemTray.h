#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <QColor>

#include <xcb/xcb.h>

#include <functional>
#include <optional>

namespace clipwren {

// The system tray of the X server's screen: the owner of the selection _NET_SYSTEM_TRAY_Sn, which takes
// windows of other programs. Main thread only.
class SystemTray {
public:
    // `changed` runs from the event loop when another manager has come or the manager has gone;
    // `looksChanged` when it has changed its colours. The connection outlives this object.
    SystemTray(X11Connection& connection, std::function<void()> changed);

    // None when there is no tray.
    xcb_window_t manager() const { return managerWindow; }

    // The colour of the panel's text, if the manager tells it.
    std::optional<QColor> foreground() const;
    // The visual that the manager wants windows to have; 0 when it does not say.
    xcb_visualid_t visual() const;

    void setLooksHandler(std::function<void()> handler) { looksChanged = std::move(handler); }

    // Asks the manager to take the window in.
    void dock(xcb_window_t window);

private:
    bool find();
    bool handle(const xcb_generic_event_t& event);

    X11Connection& connection;
    const std::function<void()> changed;
    std::function<void()> looksChanged;
    xcb_window_t managerWindow = XCB_NONE;
    const xcb_atom_t selection;
    const X11Connection::Subscription subscription;
};

} // namespace clipwren
