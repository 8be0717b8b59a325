#include "platform/linux/x11/X11KeyboardGrab.h"

#include "platform/linux/x11/X11Connection.h"

#include <chrono>
#include <thread>
#include <utility>

namespace clipwren {

namespace {

// A menu that is just closing still has the keyboard, and the server tells nobody when it lets go: hence a
// few pauses, a fifth of a second in all.
constexpr int tries = 10;
constexpr auto pause = std::chrono::milliseconds(20);

} // namespace

// On the root window, which is always there to be grabbed: a window of our own would have to be shown first.
bool X11KeyboardGrab::take() {
    if (isTaken) return true;
    const auto reply = owned(
        xcb_grab_keyboard_reply(connection.raw(),
                                xcb_grab_keyboard(connection.raw(), false, connection.root(),
                                                  XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                nullptr));
    isTaken = reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
    return isTaken;
}

void X11KeyboardGrab::giveBack() {
    if (!std::exchange(isTaken, false)) return;
    xcb_ungrab_keyboard(connection.raw(), XCB_CURRENT_TIME);
    connection.synchronize();
}

void X11KeyboardGrab::hold(const void* window) {
    holders.insert(window);
    take();
}

void X11KeyboardGrab::letGo(const void* window) {
    if (holders.erase(window) > 0 && holders.empty() && !isMonitored) giveBack();
}

bool X11KeyboardGrab::beginMonitoring() {
    for (int i = 1; !take() && i < tries && !connection.isLost(); ++i)
        std::this_thread::sleep_for(pause);
    isMonitored = isTaken;
    return isTaken;
}

void X11KeyboardGrab::endMonitoring() {
    isMonitored = false;
    giveBack();
}

} // namespace clipwren
