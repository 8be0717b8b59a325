#include "platform/linux/status/SystemTray.h"

#include <array>
#include <cstring>
#include <string>
#include <utility>

namespace clipwren {

namespace {

constexpr std::uint8_t eventTypeMask = 0x7F;
constexpr std::uint32_t requestDock = 0;

template <typename Event>
const Event& as(const xcb_generic_event_t& event) {
    return reinterpret_cast<const Event&>(event);
}

} // namespace

SystemTray::SystemTray(X11Connection& connection, std::function<void()> changed)
    : connection(connection),
      changed(std::move(changed)),
      selection(connection.atom("_NET_SYSTEM_TRAY_S" + std::to_string(connection.screenIndex()))),
      subscription(connection.subscribe([this](const xcb_generic_event_t& event) { return handle(event); })) {
    // A new manager tells of itself on the root window.
    connection.selectRootEvents(XCB_EVENT_MASK_STRUCTURE_NOTIFY, true);
    find();
}

bool SystemTray::find() {
    xcb_connection_t* raw = connection.raw();
    const xcb_window_t before = managerWindow;
    // While the server is grabbed the owner cannot go before its end is told of.
    xcb_grab_server(raw);
    const auto owner =
        owned(xcb_get_selection_owner_reply(raw, xcb_get_selection_owner(raw, selection), nullptr));
    managerWindow = owner ? owner->owner : XCB_NONE;
    if (managerWindow != XCB_NONE) {
        const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(raw, managerWindow, XCB_CW_EVENT_MASK, &events);
    }
    xcb_ungrab_server(raw);
    xcb_flush(raw);
    return managerWindow != before;
}

bool SystemTray::handle(const xcb_generic_event_t& event) {
    bool isForUsAlone = false;
    bool isOther = false;
    switch (event.response_type & eventTypeMask) {
    case XCB_CLIENT_MESSAGE: {
        const auto& message = as<xcb_client_message_event_t>(event);
        if (message.type != connection.atom("MANAGER") || message.data.data32[1] != selection) return false;
        isOther = find();
        break;
    }
    case XCB_DESTROY_NOTIFY:
        if (managerWindow == XCB_NONE || as<xcb_destroy_notify_event_t>(event).window != managerWindow)
            return false;
        isForUsAlone = true;
        isOther = find();
        break;
    case XCB_PROPERTY_NOTIFY: {
        const auto& change = as<xcb_property_notify_event_t>(event);
        if (managerWindow == XCB_NONE || change.window != managerWindow) return false;
        isForUsAlone = true;
        if (change.atom == connection.atom("_NET_SYSTEM_TRAY_COLORS") && looksChanged) looksChanged();
        break;
    }
    default: return false;
    }
    if (isOther) changed();
    return isForUsAlone;
}

std::optional<QColor> SystemTray::foreground() const {
    xcb_connection_t* raw = connection.raw();
    const auto colors = owned(xcb_get_property_reply(
        raw,
        xcb_get_property(raw, false, managerWindow, connection.atom("_NET_SYSTEM_TRAY_COLORS"),
                         XCB_ATOM_CARDINAL, 0, 3),
        nullptr));
    // Red, green and blue of the text, each from 0 to 65,535; other colours follow.
    if (!colors || colors->format != 32 || xcb_get_property_value_length(colors.get()) != 12)
        return std::nullopt;
    std::array<std::uint32_t, 3> components{};
    std::memcpy(components.data(), xcb_get_property_value(colors.get()), sizeof components);
    return QColor::fromRgba64(static_cast<ushort>(components[0]), static_cast<ushort>(components[1]),
                              static_cast<ushort>(components[2]));
}

xcb_visualid_t SystemTray::visual() const {
    xcb_connection_t* raw = connection.raw();
    const auto reply = owned(xcb_get_property_reply(
        raw,
        xcb_get_property(raw, false, managerWindow, connection.atom("_NET_SYSTEM_TRAY_VISUAL"),
                         XCB_ATOM_VISUALID, 0, 1),
        nullptr));
    if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) != 4) return 0;
    return *static_cast<const xcb_visualid_t*>(xcb_get_property_value(reply.get()));
}

void SystemTray::dock(xcb_window_t window) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = managerWindow;
    message.type = connection.atom("_NET_SYSTEM_TRAY_OPCODE");
    message.data.data32[0] = XCB_CURRENT_TIME;
    message.data.data32[1] = requestDock;
    message.data.data32[2] = window;
    xcb_send_event(connection.raw(), false, managerWindow, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&message));
}

} // namespace clipwren
