#include "platform/linux/x11/X11ScreenWatch.h"

#include "platform/linux/x11/X11Screens.h"

#include <xcb/randr.h>

#include <utility>

namespace clipwren {

namespace {

constexpr std::uint8_t eventTypeMask = 0x7F;
// One change of the layout is a burst of events.
constexpr int burstTime = 30; // milliseconds

} // namespace

X11ScreenWatch::X11ScreenWatch(X11Connection& connection) : connection(connection) {
    // Before the screens are read, so that no change between the two is missed. A monitor that a person has
    // defined shows only as a changed root window.
    xcb_connection_t* raw = connection.raw();
    if (const auto* extension = xcb_get_extension_data(raw, &xcb_randr_id); extension && extension->present) {
        changeEvent = extension->first_event;
        xcb_randr_select_input(raw, connection.root(),
                               XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                                   XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    }
    connection.selectRootEvents(XCB_EVENT_MASK_STRUCTURE_NOTIFY, true);
    known = readScreens(raw, connection.screen());
    comparing.setSingleShot(true);
    comparing.setInterval(burstTime);
    QObject::connect(&comparing, &QTimer::timeout, &comparing, [this] { compare(); });
    events = connection.subscribe([this](const xcb_generic_event_t& event) { return handle(event); });
}

bool X11ScreenWatch::isSettling() const {
    return sinceChange.isValid() && !sinceChange.hasExpired(settlingTime);
}

bool X11ScreenWatch::handle(const xcb_generic_event_t& event) {
    const int type = event.response_type & eventTypeMask;
    const bool isOfRandR = changeEvent != 0 && (type == changeEvent + XCB_RANDR_SCREEN_CHANGE_NOTIFY ||
                                                type == changeEvent + XCB_RANDR_NOTIFY);
    const bool isOfRoot =
        type == XCB_CONFIGURE_NOTIFY &&
        reinterpret_cast<const xcb_configure_notify_event_t&>(event).window == connection.root();
    if ((isOfRandR || isOfRoot) && !comparing.isActive()) comparing.start();
    return false;
}

// Programs that only look at the outputs cause events too.
void X11ScreenWatch::compare() {
    auto screens = readScreens(connection.raw(), connection.screen());
    if (connection.isLost() || screens == known) return;
    known = std::move(screens);
    sinceChange.start();
    listeners.tell();
}

} // namespace clipwren
