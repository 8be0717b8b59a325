#include "platform/linux/x11/X11ScreenSaver.h"

#include <xcb/screensaver.h>

#include <utility>

namespace clipwren {

namespace {

constexpr std::uint8_t eventTypeMask = 0x7F;

} // namespace

X11ScreenSaver::X11ScreenSaver(X11Connection& connection) : connection(connection) {}

void X11ScreenSaver::observeBegin(std::function<void()> handler) {
    const auto* extension = xcb_get_extension_data(connection.raw(), &xcb_screensaver_id);
    if (!extension || !extension->present) return;
    notifyEvent = static_cast<std::uint8_t>(extension->first_event + XCB_SCREENSAVER_NOTIFY);
    begins = std::move(handler);
    events = connection.subscribe([this](const xcb_generic_event_t& event) { return handle(event); });
    xcb_screensaver_select_input(connection.raw(), connection.root(), XCB_SCREENSAVER_EVENT_NOTIFY_MASK);
}

bool X11ScreenSaver::handle(const xcb_generic_event_t& event) const {
    if ((event.response_type & eventTypeMask) != notifyEvent) return false;
    if (reinterpret_cast<const xcb_screensaver_notify_event_t&>(event).state == XCB_SCREENSAVER_STATE_ON)
        begins();
    return true;
}

std::optional<std::uint32_t> X11ScreenSaver::idleTime() const {
    if (!notifyEvent) return std::nullopt;
    const auto reply = owned(xcb_screensaver_query_info_reply(
        connection.raw(), xcb_screensaver_query_info(connection.raw(), connection.root()), nullptr));
    return reply ? std::optional(reply->ms_since_user_input) : std::nullopt;
}

X11IdleWatch::X11IdleWatch(const X11ScreenSaver& screenSaver, int milliseconds, std::function<void()> handler)
    : screenSaver(screenSaver),
      limit(milliseconds),
      handler(std::move(handler)) {
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &timer, [this] { look(); });
    timer.start(limit);
}

// The server counts; it is asked no more often than somebody can have been away for the whole time.
void X11IdleWatch::look() {
    const auto idle = screenSaver.idleTime();
    if (!idle) return;
    const bool isTime = *idle >= static_cast<std::uint32_t>(limit);
    timer.start(isTime ? limit : limit - static_cast<int>(*idle));
    // It may end this watch.
    const auto called = handler;
    if (isTime) called();
}

} // namespace clipwren
