#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <QTimer>

#include <chrono>
#include <vector>

namespace clipwren {

// Keeps windows of this program above all others: when another window comes up or moves above them, they are
// raised again, once for any number of changes, their own order kept. Against another program that insists
// on being on top they give in after some tries, and try again a second later. Main thread only.
class X11WindowStack {
public:
    // The connection outlives this object. Nobody else sets which events of the root window are sent.
    explicit X11WindowStack(X11Connection& connection);

    // A window that has just been shown on top of the others.
    void add(xcb_window_t window);
    void remove(xcb_window_t window);

private:
    void watch(bool isOn);
    bool handle(const xcb_generic_event_t& event);
    bool isOurs(xcb_window_t window) const;
    void raise();

    X11Connection& connection;
    std::vector<xcb_window_t> windows; // the topmost last
    QTimer pending;                    // until the windows are raised
    int raisesInPeriod = 0;
    std::chrono::steady_clock::time_point periodStart;
    X11Connection::Subscription subscription;
};

} // namespace clipwren
