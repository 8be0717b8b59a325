#pragma once

#include "platform/linux/Listeners.h"
#include "platform/linux/x11/ScreenLayout.h"
#include "platform/linux/x11/X11Connection.h"

#include <QElapsedTimer>
#include <QTimer>

#include <functional>
#include <utility>
#include <vector>

namespace clipwren {

// Notices that monitors come, go, move and change their size. Main thread only.
class X11ScreenWatch {
public:
    // The connection outlives this object.
    explicit X11ScreenWatch(X11Connection& connection);

    // The screens of which it was last told, or those at the beginning.
    const std::vector<NativeScreen>& screens() const { return known; }

    // Whether the screens have just changed: the windows of all programs are still finding their places.
    bool isSettling() const;
    static constexpr int settlingTime = 150; // milliseconds

    // Called from the event loop, the first subscribed first.
    [[nodiscard]] Listeners::Subscription subscribe(std::function<void()> handler) {
        return listeners.subscribe(std::move(handler));
    }

private:
    bool handle(const xcb_generic_event_t& event);
    void compare();

    X11Connection& connection;
    std::uint8_t changeEvent = 0; // the first of RandR's events; 0 without
    std::vector<NativeScreen> known;
    Listeners listeners;
    QElapsedTimer sinceChange;
    QTimer comparing;
    X11Connection::Subscription events;
};

} // namespace clipwren
