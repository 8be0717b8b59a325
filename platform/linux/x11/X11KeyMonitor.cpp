#include "platform/linux/x11/X11KeyMonitor.h"

#include <utility>

namespace clipwren {

namespace {

constexpr std::uint8_t eventTypeMask = 0x7F;
// Above all virtual key codes: the keys that the program does not name.
constexpr std::uint32_t unnamedKeys = 0x100;

} // namespace

std::unique_ptr<X11KeyMonitor> X11KeyMonitor::create(X11Connection& connection, X11KeyboardGrab& keyboardGrab,
                                                     Handler handler) {
    if (!keyboardGrab.beginMonitoring()) return nullptr;
    return std::unique_ptr<X11KeyMonitor>(new X11KeyMonitor(connection, keyboardGrab, std::move(handler)));
}

X11KeyMonitor::X11KeyMonitor(X11Connection& connection, X11KeyboardGrab& keyboardGrab, Handler handler)
    : keyboardGrab(keyboardGrab),
      keyboard(X11Keyboard::read(connection)),
      handler(std::make_shared<const Handler>(std::move(handler))) {
    subscription = connection.subscribe([this](const xcb_generic_event_t& event) { return handle(event); });
}

X11KeyMonitor::~X11KeyMonitor() { keyboardGrab.endMonitoring(); }

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
