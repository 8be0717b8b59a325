#pragma once

#include "platform/Screens.h"
#include "platform/linux/x11/ScreenLayout.h"
#include "platform/linux/x11/X11Reply.h"
#include "platform/linux/x11/X11ScreenWatch.h"

#include <xcb/xcb.h>

#include <functional>
#include <vector>

namespace clipwren {

class X11Connection;

// The server's monitors (RandR 1.5), laid out; on a server without RandR the whole root window as one. None
// when the connection is lost. Any thread that owns `connection`; asks the server anew on every call.
//
// `await` gives the reply to the request of that number, or null; without one the wait ends only with the
// connection.
using AwaitReply = std::function<X11Reply<void>(unsigned int sequence)>;
std::vector<NativeScreen> readScreens(xcb_connection_t* connection, const xcb_screen_t& screen,
                                      AwaitReply await = {});

// The monitors as screens. A screen's number is its NativeScreen's id.
class X11Screens final : public Screens {
public:
    // The connection outlives this object.
    explicit X11Screens(X11Connection& connection) : connection(connection), changes(connection) {}

    std::vector<Screen> screens() const override;
    // The screen under the pointer, otherwise the primary one.
    std::optional<Screen> main() const override;
    std::uint32_t mainDisplayID() const override;
    std::unique_ptr<ScreensObserver> observeDidChange(std::function<void()> handler) override;

    std::vector<NativeScreen> nativeScreens() const;
    X11ScreenWatch& watch() { return changes; }

private:
    X11Connection& connection;
    X11ScreenWatch changes;
};

} // namespace clipwren
