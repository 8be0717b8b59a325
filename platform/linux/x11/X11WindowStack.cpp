#include "platform/linux/x11/X11WindowStack.h"

#include <algorithm>
#include <array>

namespace clipwren {

namespace {

constexpr std::uint8_t eventTypeMask = 0x7F;
constexpr int raisesAPeriod = 20;
constexpr auto period = std::chrono::seconds(1);

} // namespace

X11WindowStack::X11WindowStack(X11Connection& connection) : connection(connection) {
    pending.setSingleShot(true);
    QObject::connect(&pending, &QTimer::timeout, &pending, [this] { raise(); });
    subscription = connection.subscribe([this](const xcb_generic_event_t& event) { return handle(event); });
}

void X11WindowStack::add(xcb_window_t window) {
    if (windows.empty()) watch(true);
    windows.push_back(window);
}

void X11WindowStack::remove(xcb_window_t window) {
    std::erase(windows, window);
    if (windows.empty()) watch(false);
}

void X11WindowStack::watch(bool isOn) {
    connection.selectRootEvents(XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY, isOn);
}

bool X11WindowStack::isOurs(xcb_window_t window) const {
    return std::find(windows.begin(), windows.end(), window) != windows.end();
}

bool X11WindowStack::handle(const xcb_generic_event_t& event) {
    if (windows.empty()) return false;
    xcb_window_t moved = XCB_NONE;
    switch (event.response_type & eventTypeMask) {
    case XCB_MAP_NOTIFY: moved = reinterpret_cast<const xcb_map_notify_event_t&>(event).window; break;
    case XCB_REPARENT_NOTIFY:
        moved = reinterpret_cast<const xcb_reparent_notify_event_t&>(event).window;
        break;
    case XCB_CIRCULATE_NOTIFY:
        moved = reinterpret_cast<const xcb_circulate_notify_event_t&>(event).window;
        break;
    case XCB_CONFIGURE_NOTIFY: {
        moved = reinterpret_cast<const xcb_configure_notify_event_t&>(event).window;
        // The server tells it only when a raise was needed.
        if (isOurs(moved)) ++raisesInPeriod;
        break;
    }
    default: return false;
    }
    if (!isOurs(moved) && !pending.isActive()) pending.start(0);
    return false;
}

void X11WindowStack::raise() {
    if (windows.empty()) return;
    const auto now = std::chrono::steady_clock::now();
    if (now - periodStart >= period) {
        periodStart = now;
        raisesInPeriod = 0;
    } else if (raisesInPeriod >= raisesAPeriod) {
        pending.start(std::chrono::ceil<std::chrono::milliseconds>(period - (now - periodStart)));
        return;
    }
    // Each below the next: windows that are right already stay untouched, so they never fight each other.
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(connection.raw(), windows.back(), XCB_CONFIG_WINDOW_STACK_MODE, &above);
    for (auto i = windows.size() - 1; i > 0; --i) {
        const std::array<std::uint32_t, 2> below{windows[i], XCB_STACK_MODE_BELOW};
        xcb_configure_window(connection.raw(), windows[i - 1],
                             XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE, below.data());
    }
}

} // namespace clipwren
