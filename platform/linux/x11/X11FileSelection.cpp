#include "platform/linux/x11/X11FileSelection.h"

#include "platform/linux/x11/X11Reply.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <vector>

#include <poll.h>

namespace clipwren {

namespace {

using Clock = std::chrono::steady_clock;

// The server's clock has 32 bits and starts again after seven weeks.
bool isBefore(xcb_timestamp_t a, xcb_timestamp_t b) { return static_cast<std::int32_t>(a - b) < 0; }

template <typename Event>
const Event* eventAs(const xcb_generic_event_t& event, std::uint8_t type) {
    constexpr std::uint8_t sentByClient = 0x80;
    if ((event.response_type & ~sentByClient) != type) return nullptr;
    return reinterpret_cast<const Event*>(&event);
}

} // namespace

std::unique_ptr<X11FileSelection> X11FileSelection::connect() {
    std::unique_ptr<X11FileSelection> selection(new X11FileSelection(xcb_connect(nullptr, nullptr)));
    return selection->prepare() ? std::move(selection) : nullptr;
}

X11FileSelection::X11FileSelection(xcb_connection_t* connection) : connection(connection) {}

X11FileSelection::~X11FileSelection() { xcb_disconnect(connection); }

bool X11FileSelection::prepare() {
    if (isLost()) return false;
    constexpr std::array<std::string_view, atomCount> names{"CLIPBOARD",
                                                            "TARGETS",
                                                            "TIMESTAMP",
                                                            "MULTIPLE",
                                                            "CLIPWREN_SELECTION",
                                                            "text/uri-list",
                                                            "x-special/gnome-copied-files",
                                                            "application/x-kde-cutselection"};
    std::array<xcb_intern_atom_cookie_t, atomCount> cookies{};
    for (std::size_t index = 0; index < atomCount; ++index)
        cookies[index] = xcb_intern_atom(connection, false, static_cast<std::uint16_t>(names[index].size()),
                                         names[index].data());
    for (std::size_t index = 0; index < atomCount; ++index) {
        const auto reply = owned(xcb_intern_atom_reply(connection, cookies[index], nullptr));
        if (!reply) return false;
        atoms[index] = reply->atom;
    }

    const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    window = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    return true;
}

// A property changed by nothing tells the time at which that happened.
std::optional<xcb_timestamp_t> X11FileSelection::serverTime() {
    xcb_change_property(connection, XCB_PROP_MODE_APPEND, window, atoms[ownProperty], XCB_ATOM_ATOM, 32, 0,
                        nullptr);
    std::optional<xcb_timestamp_t> time;
    waitFor([&](const xcb_generic_event_t& event) {
        const auto* change = eventAs<xcb_property_notify_event_t>(event, XCB_PROPERTY_NOTIFY);
        if (change && change->atom == atoms[ownProperty]) time = change->time;
        return time.has_value();
    });
    return time;
}

bool X11FileSelection::offer(const std::string& uri, std::optional<xcb_timestamp_t> asOf) {
    const auto time = asOf ? asOf : serverTime();
    if (!time) return false;
    offeredUri = uri;
    ownedSince = *time;
    xcb_set_selection_owner(connection, window, atoms[clipboard], *time);
    const auto owner = owned(xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, atoms[clipboard]), nullptr));
    owning = owner && owner->owner == window;
    answer(); // Events that came with the reply make the descriptor readable no more.
    return owning;
}

void X11FileSelection::clear() {
    if (const auto time = serverTime())
        xcb_set_selection_owner(connection, XCB_WINDOW_NONE, atoms[clipboard], *time);
    owning = false;
    answer();
}

void X11FileSelection::answer() {
    while (const auto event = owned(xcb_poll_for_event(connection)))
        handle(*event);
    xcb_flush(connection);
    if (isLost()) owning = false;
}

// Errors come as events too, and mean that a program that asked has ended: nobody waits for the answer.
void X11FileSelection::handle(const xcb_generic_event_t& event) {
    if (const auto* request = eventAs<xcb_selection_request_event_t>(event, XCB_SELECTION_REQUEST)) {
        reply(*request);
    } else if (const auto* loss = eventAs<xcb_selection_clear_event_t>(event, XCB_SELECTION_CLEAR)) {
        if (loss->selection == atoms[clipboard] && !isBefore(loss->time, ownedSince)) owning = false;
    }
}

bool X11FileSelection::waitFor(const std::function<bool(const xcb_generic_event_t&)>& condition) {
    const auto end = Clock::now() + std::chrono::seconds(1);
    xcb_flush(connection);
    while (!isLost()) {
        while (const auto event = owned(xcb_poll_for_event(connection))) {
            handle(*event);
            if (condition(*event)) return true;
        }
        xcb_flush(connection);
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd readable{fileDescriptor(), POLLIN, 0};
        if (left <= 0 || poll(&readable, 1, static_cast<int>(left)) == 0) return false;
    }
    return false;
}

void X11FileSelection::reply(const xcb_selection_request_event_t& request) {
    // Old programs name no property and mean the target's name.
    const auto property = request.property == XCB_ATOM_NONE ? request.target : request.property;
    const bool isOfOurTime = request.time == XCB_CURRENT_TIME || !isBefore(request.time, ownedSince);
    const bool isGiven =
        owning && request.selection == atoms[clipboard] && isOfOurTime &&
        (request.target == atoms[multiple] ? convertMultiple(request.requestor, property)
                                           : convert(request.requestor, request.target, property));

    xcb_selection_notify_event_t notification{};
    notification.response_type = XCB_SELECTION_NOTIFY;
    notification.time = request.time;
    notification.requestor = request.requestor;
    notification.selection = request.selection;
    notification.target = request.target;
    if (isGiven) notification.property = property;
    // The protocol's events are 32 bytes long, some of their structs shorter.
    std::array<char, 32> bytes{};
    std::copy_n(reinterpret_cast<const char*>(&notification), sizeof notification, bytes.begin());
    xcb_send_event(connection, false, request.requestor, XCB_EVENT_MASK_NO_EVENT, bytes.data());
}

bool X11FileSelection::convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property) {
    const auto put = [&](xcb_atom_t type, std::uint8_t format, std::size_t count, const void* data) {
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, requestor, property, type, format,
                            static_cast<std::uint32_t>(count), data);
        return true;
    };
    const auto putText = [&](const std::string& text) { return put(target, 8, text.size(), text.data()); };

    if (target == atoms[uriList]) return putText(offeredUri + "\r\n");
    if (target == atoms[gnomeCopiedFiles]) return putText("copy\n" + offeredUri);
    if (target == atoms[kdeCutSelection]) return putText("0");
    if (target == atoms[timestamp]) return put(XCB_ATOM_INTEGER, 32, 1, &ownedSince);
    if (target == atoms[targets]) {
        const std::array offered{atoms[targets], atoms[timestamp],        atoms[multiple],
                                 atoms[uriList], atoms[gnomeCopiedFiles], atoms[kdeCutSelection]};
        return put(XCB_ATOM_ATOM, 32, offered.size(), offered.data());
    }
    return false;
}

// The property holds pairs of target and property; those that cannot be given get "none" for a property.
bool X11FileSelection::convertMultiple(xcb_window_t requestor, xcb_atom_t property) {
    constexpr std::uint32_t longestList = 256;
    const auto list = owned(xcb_get_property_reply(
        connection,
        xcb_get_property(connection, false, requestor, property, XCB_GET_PROPERTY_TYPE_ANY, 0, longestList),
        nullptr));
    if (!list || list->format != 32) return false;
    const auto* first = static_cast<const xcb_atom_t*>(xcb_get_property_value(list.get()));
    std::vector<xcb_atom_t> pairs(first, first + list->value_len);
    for (std::size_t index = 0; index + 1 < pairs.size(); index += 2) {
        const auto target = pairs[index];
        auto& place = pairs[index + 1];
        if (target == atoms[multiple] || place == XCB_ATOM_NONE || !convert(requestor, target, place))
            place = XCB_ATOM_NONE;
    }
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, requestor, property, list->type, 32,
                        static_cast<std::uint32_t>(pairs.size()), pairs.data());
    return true;
}

} // namespace clipwren
