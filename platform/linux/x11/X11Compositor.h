#pragma once

#include "platform/linux/Listeners.h"
#include "platform/linux/x11/X11Connection.h"

#include <QRegion>
#include <QTimer>

#include <functional>
#include <utility>

namespace clipwren {

// The compositing manager of the screen, which may start and end at any time. Main thread only.
class X11Compositor {
public:
    // The connection outlives this object.
    explicit X11Compositor(X11Connection& connection);

    // As last heard, a moment after the fact: what a compositor does when it starts and ends takes time.
    bool isRunning() const { return running; }

    // Called from the event loop at once when a running compositor goes: what it made translucent is opaque.
    [[nodiscard]] Listeners::Subscription subscribeToEnd(std::function<void()> handler) {
        return endListeners.subscribe(std::move(handler));
    }
    // Called from the event loop when a compositor has started or ended, also if another one has taken its
    // place.
    [[nodiscard]] Listeners::Subscription subscribe(std::function<void()> handler) {
        return listeners.subscribe(std::move(handler));
    }

    // Makes the change and returns when it can be seen on the screen: when everything in `area` (native
    // pixels) has been painted anew since, after a fifth of a second at the latest. Without a compositor the
    // server itself has done it at once.
    void changeAndAwaitRepaint(const QRegion& area, const std::function<void()>& change);

private:
    bool askIsRunning();
    void settle();
    bool handle(const xcb_generic_event_t& event);

    X11Connection& connection;
    const xcb_atom_t selection;
    std::uint8_t fixesEvent = 0;  // first event number of XFixes; 0 without
    std::uint8_t damageEvent = 0; // of XDamage
    bool running = false;
    bool endWasTold = false;
    Listeners endListeners;
    Listeners listeners;
    QTimer settling;
    X11Connection::Subscription subscription;
};

} // namespace clipwren
