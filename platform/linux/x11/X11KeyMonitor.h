#pragma once

#include "platform/Windows.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Keyboard.h"
#include "platform/linux/x11/X11KeyboardGrab.h"

#include <functional>
#include <memory>

namespace clipwren {

// Has the keyboard to itself as long as it lives. Main thread only.
class X11KeyMonitor final : public KeyMonitor {
public:
    using Handler = std::function<bool(std::uint32_t keyCode)>;

    // Null when another program keeps the keyboard. Connection and keyboard outlive the monitor.
    static std::unique_ptr<X11KeyMonitor> create(X11Connection& connection, X11KeyboardGrab& keyboardGrab,
                                                 Handler handler);
    ~X11KeyMonitor() override;

private:
    X11KeyMonitor(X11Connection& connection, X11KeyboardGrab& keyboardGrab, Handler handler);
    bool handle(const xcb_generic_event_t& event);

    X11KeyboardGrab& keyboardGrab;
    const X11Keyboard keyboard;
    const std::shared_ptr<const Handler> handler;
    X11Connection::Subscription subscription;
};

} // namespace clipwren
