#include "platform/linux/x11/X11Connection.h"

#include <QAbstractEventDispatcher>

#include <algorithm>
#include <chrono>
#include <poll.h>

namespace clipwren {

namespace {

// The highest bit marks an event that another client has sent.
constexpr std::uint8_t eventTypeMask = 0x7F;

const xcb_screen_t* screenAt(xcb_connection_t* connection, int index) {
    for (auto it = xcb_setup_roots_iterator(xcb_get_setup(connection)); it.rem > 0;
         xcb_screen_next(&it), --index)
        if (index == 0) return it.data;
    return nullptr;
}

const xcb_motion_notify_event_t* asMotion(const xcb_generic_event_t& event) {
    if ((event.response_type & eventTypeMask) != XCB_MOTION_NOTIFY) return nullptr;
    return reinterpret_cast<const xcb_motion_notify_event_t*>(&event);
}

} // namespace

Expected<std::unique_ptr<X11Connection>, PlatformError> X11Connection::open(const std::string& displayName) {
    int screenIndex = 0;
    xcb_connection_t* connection =
        xcb_connect(displayName.empty() ? nullptr : displayName.c_str(), &screenIndex);
    const xcb_screen_t* screen =
        xcb_connection_has_error(connection) ? nullptr : screenAt(connection, screenIndex);
    if (!screen) {
        xcb_disconnect(connection);
        return Unexpected{PlatformError{"The X server cannot be reached."}};
    }
    return std::unique_ptr<X11Connection>(new X11Connection(connection, screen, screenIndex));
}

X11Connection::X11Connection(xcb_connection_t* connection, const xcb_screen_t* screen, int screenIndex)
    : connection(connection),
      defaultScreen(screen),
      defaultScreenIndex(screenIndex),
      notifier(xcb_get_file_descriptor(connection), QSocketNotifier::Read) {
    QObject::connect(&notifier, &QSocketNotifier::activated, &context, [this] {
        readQueued();
        handOut();
    });
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, &context,
                     [this] { beforeWaiting(); });
}

X11Connection::~X11Connection() {
    notifier.setEnabled(false);
    xcb_disconnect(connection);
}

xcb_atom_t X11Connection::atom(std::string_view name) {
    if (const auto known = atoms.find(name); known != atoms.end()) return known->second;
    const auto reply = owned(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, false, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    if (!reply) return XCB_ATOM_NONE;
    return atoms.emplace(name, reply->atom).first->second;
}

X11Connection::Subscription X11Connection::subscribe(EventHandler handler) {
    auto subscription = std::make_shared<const EventHandler>(std::move(handler));
    std::erase_if(handlers, [](const auto& known) { return known.expired(); });
    handlers.push_back(subscription);
    return subscription;
}

void X11Connection::synchronize() {
    owned(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

void X11Connection::selectRootEvents(std::uint32_t events, bool isOn) {
    rootEvents = isOn ? rootEvents | events : rootEvents & ~events;
    xcb_change_window_attributes(connection, root(), XCB_CW_EVENT_MASK, &rootEvents);
}

bool X11Connection::waitForEvent(int milliseconds,
                                 const std::function<bool(const xcb_generic_event_t&)>& condition) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    xcb_flush(connection);
    while (!isLost()) {
        while (auto event = owned(xcb_poll_for_event(connection))) {
            if (condition(*event)) return true;
            events.push_back(std::move(event));
        }
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        if (left.count() <= 0) return false;
        pollfd descriptor{xcb_get_file_descriptor(connection), POLLIN, 0};
        if (poll(&descriptor, 1, static_cast<int>(left.count())) == 0) return false;
    }
    return false;
}

// A round trip reads events along with its reply; the socket then tells nothing of them.
void X11Connection::beforeWaiting() {
    xcb_flush(connection);
    while (auto event = owned(xcb_poll_for_queued_event(connection)))
        events.push_back(std::move(event));
    if (!events.empty() || (isLost() && !lossReported))
        QMetaObject::invokeMethod(&context, [this] { handOut(); }, Qt::QueuedConnection);
}

void X11Connection::readQueued() {
    while (auto event = owned(xcb_poll_for_event(connection)))
        events.push_back(std::move(event));
}

void X11Connection::handOut() {
    // A handler may run a nested event loop, which goes on with the same queue, and handlers may come and go.
    while (!events.empty()) {
        const auto event = std::move(events.front());
        events.pop_front();
        if (const auto* motion = asMotion(*event); motion && !events.empty()) {
            const auto* next = asMotion(*events.front());
            if (next && next->event == motion->event) continue;
        }
        const auto offeredTo = handlers;
        for (const auto& candidate : offeredTo) {
            const auto handler = candidate.lock();
            if (handler && (*handler)(*event)) break;
        }
    }
    checkForLoss();
}

void X11Connection::checkForLoss() {
    if (!isLost() || lossReported) return;
    lossReported = true;
    // The closed socket stays readable for ever.
    notifier.setEnabled(false);
    if (lossHandler) lossHandler();
}

} // namespace clipwren
