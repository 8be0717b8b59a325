#pragma once

#include "base/Expected.h"
#include "platform/ScreenCapture.h"
#include "platform/linux/x11/X11Reply.h"

#include <QObject>
#include <QSocketNotifier>

#include <xcb/xcb.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace clipwren {

// The program's own connection to the X server for the main thread, apart from the toolkit's. Main thread
// only; needs Qt's event loop of that thread.
//
// Requests are sent to the server before the event loop waits. Events are handed out from the event loop, in
// the order in which the server sent them, also those that arrived during a round trip. Of pointer motions
// in a row for one window only the last is handed out.
//
// A lost connection is no error of anybody: requests do nothing, replies are empty, and it is reported once.
class X11Connection {
public:
    // Returns true when nobody else need see the event.
    using EventHandler = std::function<bool(const xcb_generic_event_t&)>;
    // Keeps a handler in place as long as it lives. Releasing it inside the handler is allowed.
    using Subscription = std::shared_ptr<const EventHandler>;

    // `displayName` empty: the one that DISPLAY names.
    static Expected<std::unique_ptr<X11Connection>, PlatformError> open(const std::string& displayName = {});
    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    xcb_connection_t* raw() const { return connection; }
    const xcb_screen_t& screen() const { return *defaultScreen; }
    xcb_window_t root() const { return defaultScreen->root; }
    int screenIndex() const { return defaultScreenIndex; }

    // Asked from the server once a name. None on a lost connection.
    xcb_atom_t atom(std::string_view name);

    // Events are offered to the handlers in the order in which they were subscribed.
    [[nodiscard]] Subscription subscribe(EventHandler handler);

    // Returns when the server has done everything that it was asked for.
    void synchronize();

    // Chooses events of the root window or gives them up again. The server keeps one choice a connection:
    // each kind of event has one user here at a time.
    void selectRootEvents(std::uint32_t events, bool isOn);

    // Reads events for at most `milliseconds`, until one satisfies the condition. That one is taken out; the
    // others are handed out later, from the event loop. False when none came.
    bool waitForEvent(int milliseconds, const std::function<bool(const xcb_generic_event_t&)>& condition);

    bool isLost() const { return xcb_connection_has_error(connection) != 0; }
    // Called once, from the event loop, when the connection is lost.
    void setLossHandler(std::function<void()> handler) { lossHandler = std::move(handler); }

private:
    X11Connection(xcb_connection_t* connection, const xcb_screen_t* screen, int screenIndex);
    void beforeWaiting();
    void readQueued();
    void handOut();
    void checkForLoss();

    xcb_connection_t* connection;
    const xcb_screen_t* defaultScreen;
    int defaultScreenIndex;
    std::uint32_t rootEvents = 0;
    std::map<std::string, xcb_atom_t, std::less<>> atoms;
    std::vector<std::weak_ptr<const EventHandler>> handlers;
    std::deque<X11Reply<xcb_generic_event_t>> events;
    std::function<void()> lossHandler;
    bool lossReported = false;
    QObject context; // what calls from the event loop hang on
    QSocketNotifier notifier;
};

} // namespace clipwren
