#include "platform/linux/x11/X11KeyMonitor.h"

#include <chrono>
#include <thread>

namespace clipwren {

namespace {

constexpr std::uint8_t eventTypeMask = 0x7F;
constexpr int tries = 10;
constexpr auto pause = std::chrono::milliseconds(20);
// Above all virtual key codes: the keys that the program does not name.
constexpr std::uint32_t unnamedKeys = 0x100;

std::uint8_t grab(X11Connection& connection) {
    const auto reply = owned(
        xcb_grab_keyboard_reply(connection.raw(),
                                xcb_grab_keyboard(connection.raw(), false, connection.root(),
                                                  XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                nullptr));
    return reply ? reply->status : static_cast<std::uint8_t>(XCB_GRAB_STATUS_INVALID_TIME);
}

} // namespace

std::unique_ptr<X11KeyMonitor> X11KeyMonitor::create(X11Connection& connection, Handler handler) {
    std::uint8_t status = grab(connection);
    for (int i = 1; i < tries && status == XCB_GRAB_STATUS_ALREADY_GRABBED; ++i) {
        std::this_thread::sleep_for(pause);
        status = grab(connection);
    }
    if (status != XCB_GRAB_STATUS_SUCCESS) return nullptr;
    return std::unique_ptr<X11KeyMonitor>(new X11KeyMonitor(connection, std::move(handler)));
}

X11KeyMonitor::X11KeyMonitor(X11Connection& connection, Handler handler)
    : connection(connection),
      keyboard(X11Keyboard::read(connection)),
      handler(std::make_shared<const Handler>(std::move(handler))) {
    subscription = connection.subscribe([this](const xcb_generic_event_t& event) { return handle(event); });
}

X11KeyMonitor::~X11KeyMonitor() {
    xcb_ungrab_keyboard(connection.raw(), XCB_CURRENT_TIME);
    connection.synchronize();
}

bool X11KeyMonitor::handle(const xcb_generic_event_t& event) {
    if ((event.response_type & eventTypeMask) != XCB_KEY_PRESS) return false;
    const xcb_keycode_t keycode = reinterpret_cast<const xcb_key_press_event_t&>(event).detail;
    const std::uint32_t keyCode = keyboard.isEscape(keycode)      ? KeyCode::escape
                                  : keycode == keyboard.physicalG ? KeyCode::g
                                                                  : unnamedKeys + keycode;
    const auto called = handler; // It may end this monitor.
    return (*called)(keyCode);
}

} // namespace clipwren
