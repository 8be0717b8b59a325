#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <QTimer>

#include <cstdint>
#include <functional>
#include <optional>

namespace clipwren {

// The X server's screen saver (extension MIT-SCREEN-SAVER), by which lockers know when to start. It begins
// when nobody has touched mouse or keyboard for the time that `xset s` sets, or when a program says so; also
// while the keyboard is grabbed. Main thread only.
class X11ScreenSaver {
public:
    // The connection outlives this object.
    explicit X11ScreenSaver(X11Connection& connection);

    // `handler` is called from the event loop whenever it begins. Once.
    void observeBegin(std::function<void()> handler);

    // For how long nobody has touched mouse or keyboard, in milliseconds; none where the server does not
    // know.
    std::optional<std::uint32_t> idleTime() const;

private:
    bool handle(const xcb_generic_event_t& event) const;

    X11Connection& connection;
    std::optional<std::uint8_t> notifyEvent; // none without the extension
    std::function<void()> begins;
    X11Connection::Subscription events;
};

// Notices that nobody has touched mouse or keyboard for some time. Main thread only.
class X11IdleWatch {
public:
    // `handler` is called from the event loop, once a time without input. The screen saver outlives this
    // object.
    X11IdleWatch(const X11ScreenSaver& screenSaver, int milliseconds, std::function<void()> handler);

private:
    void look();

    const X11ScreenSaver& screenSaver;
    const int limit; // milliseconds
    const std::function<void()> handler;
    QTimer timer;
};

} // namespace clipwren
