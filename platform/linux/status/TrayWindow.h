#pragma once

#include "platform/linux/status/SystemTray.h"
#include "platform/linux/x11/X11Connection.h"

#include <QImage>
#include <QRect>
#include <QSize>

#include <xcb/render.h>

#include <functional>

namespace clipwren {

// A window of our own inside the system tray (the XEMBED protocol). It is transparent: the panel shines
// through wherever the picture does. Main thread only.
class TrayWindow {
public:
    enum class Event { resized, exposed, pressed, entered, left, thrownOut };

    // Asks the tray, which must have a manager, to take the window in. Events are told from the event loop;
    // `thrownOut`: the tray has put the window back on the root window, where it must not stay. The handler
    // may destroy this object.
    TrayWindow(X11Connection& connection, SystemTray& tray, const std::string& name,
               std::function<void(Event)> handler);
    ~TrayWindow();
    TrayWindow(const TrayWindow&) = delete;
    TrayWindow& operator=(const TrayWindow&) = delete;

    // Whether a tray has taken it in.
    bool isDocked() const { return docked; }
    // In pixels; the tray decides.
    QSize size() const { return currentSize; }
    // Where it lies on the root window, in pixels.
    QRect geometry() const;

    // The width that it wants to have, which most trays give.
    void setWantedWidth(int width);
    // A picture of its present size, premultiplied.
    void show(const QImage& picture);
    // How light the panel is behind it, from 0 to 1; nothing when that cannot be seen.
    std::optional<double> backgroundLightness();

private:
    bool handle(const xcb_generic_event_t& event);
    void tell(Event event);
    void setProperties(const std::string& name);
    bool hasAlpha() const { return depth == 32; }

    X11Connection& connection;
    const std::function<void(Event)> handler;
    xcb_window_t window = XCB_NONE;
    xcb_colormap_t colormap = XCB_NONE;
    std::uint8_t depth = 0;
    xcb_render_pictformat_t windowFormat = 0;
    xcb_render_pictformat_t argbFormat = 0;
    QSize currentSize;
    bool docked = false;
    X11Connection::Subscription subscription;
};

} // namespace clipwren
