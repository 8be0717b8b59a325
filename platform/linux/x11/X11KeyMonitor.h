#pragma once

#include "platform/Windows.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Keyboard.h"

#include <functional>
#include <memory>

namespace clipwren {

// Has the keyboard to itself as long as it lives. Main thread only.
class X11KeyMonitor final : public KeyMonitor {
public:
    using Handler = std::function<bool(std::uint32_t keyCode)>;

    // Tries for a fifth of a second while another program has the keyboard (a menu that is just closing),
    // then gives up: null. The connection outlives the monitor.
    static std::unique_ptr<X11KeyMonitor> create(X11Connection& connection, Handler handler);
    ~X11KeyMonitor() override;

private:
    X11KeyMonitor(X11Connection& connection, Handler handler);
    bool handle(const xcb_generic_event_t& event);

    X11Connection& connection;
    const X11Keyboard keyboard;
    const std::shared_ptr<const Handler> handler;
    X11Connection::Subscription subscription;
};

} // namespace clipwren
