#include "platform/linux/x11/X11Compositor.h"

#include <xcb/damage.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>

namespace clipwren {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int longestRepaint = 100; // milliseconds
constexpr int shortestSecond = 16;
constexpr int longestSecond = 100;
// Between the moment when a compositor is gone and the moment when all windows have painted what it kept.
constexpr int endTime = 150; // milliseconds
// Between the moment when one names itself and the moment when it surely paints: until then a translucent
// window is black. Nothing is lost by waiting, since what can be seen without a compositor stays.
constexpr int startTime = 400;
constexpr std::uint8_t eventTypeMask = 0x7F;

} // namespace

X11Compositor::X11Compositor(X11Connection& connection)
    : connection(connection),
      selection(connection.atom("_NET_WM_CM_S" + std::to_string(connection.screenIndex()))) {
    xcb_connection_t* raw = connection.raw();
    if (const auto* damage = xcb_get_extension_data(raw, &xcb_damage_id); damage && damage->present) {
        const auto version =
            owned(xcb_damage_query_version_reply(raw, xcb_damage_query_version(raw, 1, 1), nullptr));
        if (version) damageEvent = damage->first_event;
    }
    if (const auto* fixes = xcb_get_extension_data(raw, &xcb_xfixes_id); fixes && fixes->present) {
        const auto version =
            owned(xcb_xfixes_query_version_reply(raw, xcb_xfixes_query_version(raw, 5, 0), nullptr));
        if (version) fixesEvent = fixes->first_event;
        xcb_xfixes_select_selection_input(raw, connection.root(), selection,
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    }
    running = askIsRunning();
    settling.setSingleShot(true);
    QObject::connect(&settling, &QTimer::timeout, &settling, [this] { settle(); });
    subscription = connection.subscribe([this](const xcb_generic_event_t& event) { return handle(event); });
}

bool X11Compositor::askIsRunning() {
    const auto reply = owned(xcb_get_selection_owner_reply(
        connection.raw(), xcb_get_selection_owner(connection.raw(), selection), nullptr));
    return reply && reply->owner != XCB_NONE;
}

void X11Compositor::settle() {
    const bool runs = askIsRunning();
    const bool hasChanged = std::exchange(running, runs) != runs;
    if (std::exchange(endWasTold, false) || hasChanged) listeners.tell();
}

bool X11Compositor::handle(const xcb_generic_event_t& event) {
    if (fixesEvent == 0 || (event.response_type & eventTypeMask) != fixesEvent + XCB_XFIXES_SELECTION_NOTIFY)
        return false;
    const auto& notice = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
    if (notice.selection != selection) return false;
    settling.start(notice.owner == XCB_NONE ? endTime : startTime);
    if (notice.owner == XCB_NONE && running && !std::exchange(endWasTold, true)) endListeners.tell();
    return true;
}

void X11Compositor::changeAndAwaitRepaint(const QRegion& area, const std::function<void()>& change) {
    if (!running || damageEvent == 0 || connection.isLost()) {
        change();
        return;
    }
    xcb_connection_t* raw = connection.raw();
    const xcb_damage_damage_t damage = xcb_generate_id(raw);
    xcb_damage_create(raw, damage, connection.root(), XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
    // Tells apart what was painted before, and the notice of everything with which a damage object begins.
    const unsigned before = xcb_no_operation(raw).sequence;
    const auto begin = Clock::now();
    change();
    QRegion left = area;
    const auto isRepainted = [&](const xcb_generic_event_t& event) {
        if ((event.response_type & eventTypeMask) != damageEvent + XCB_DAMAGE_NOTIFY) return false;
        const auto& notice = reinterpret_cast<const xcb_damage_notify_event_t&>(event);
        const auto sinceThen = static_cast<std::int16_t>(notice.sequence - before);
        if (notice.damage != damage || sinceThen <= 0) return false;
        left -= QRect(notice.area.x, notice.area.y, notice.area.width, notice.area.height);
        return left.isEmpty();
    };
    // The first painting may have begun before the change and been finished after it; then a second follows.
    if (connection.waitForEvent(longestRepaint, isRepainted)) {
        left = area;
        const auto first = std::chrono::ceil<std::chrono::milliseconds>(Clock::now() - begin).count();
        connection.waitForEvent(std::clamp(3 * static_cast<int>(first), shortestSecond, longestSecond),
                                isRepainted);
    }
    xcb_damage_destroy(raw, damage);
}

} // namespace clipwren
