#include "platform/linux/x11/X11CaptureLink.h"

#include <xcb/xcbext.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <poll.h>

namespace clipwren {

namespace {

// How long a server that does not answer may hold up the end of a recording, in all.
constexpr X11CaptureLink::Nanoseconds patienceAtEnd = 1'000'000'000;

} // namespace

X11CaptureLink::Nanoseconds X11CaptureLink::now() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

Expected<std::unique_ptr<X11CaptureLink>, PlatformError> X11CaptureLink::open(const std::string& displayName,
                                                                              EndSignal& end) {
    int screenIndex = 0;
    xcb_connection_t* connection =
        xcb_connect(displayName.empty() ? nullptr : displayName.c_str(), &screenIndex);
    const xcb_screen_t* screen = nullptr;
    if (!xcb_connection_has_error(connection))
        for (auto it = xcb_setup_roots_iterator(xcb_get_setup(connection)); it.rem > 0 && !screen;
             xcb_screen_next(&it), --screenIndex)
            if (screenIndex == 0) screen = it.data;
    if (!screen) {
        xcb_disconnect(connection);
        return Unexpected{PlatformError{"The display server cannot be reached."}};
    }
    return std::unique_ptr<X11CaptureLink>(new X11CaptureLink(connection, screen, end));
}

X11CaptureLink::X11CaptureLink(xcb_connection_t* connection, const xcb_screen_t* screen, EndSignal& end)
    : connection(connection),
      defaultScreen(screen),
      end(end) {}

X11CaptureLink::~X11CaptureLink() { xcb_disconnect(connection); }

bool X11CaptureLink::has(xcb_extension_t& extension) const {
    const xcb_query_extension_reply_t* data = xcb_get_extension_data(connection, &extension);
    return data && data->present;
}

bool X11CaptureLink::hasKnownPixels() const {
    const xcb_screen_t& screen = *defaultScreen;
    const xcb_setup_t* setup = xcb_get_setup(connection);
    const auto order =
        std::endian::native == std::endian::little ? XCB_IMAGE_ORDER_LSB_FIRST : XCB_IMAGE_ORDER_MSB_FIRST;
    if (setup->image_byte_order != order) return false;
    bool fitsWords = false;
    for (auto it = xcb_setup_pixmap_formats_iterator(setup); it.rem > 0; xcb_format_next(&it))
        fitsWords |= it.data->depth == screen.root_depth && it.data->bits_per_pixel == 32 &&
                     it.data->scanline_pad == 32;
    if (!fitsWords) return false;
    for (auto depth = xcb_screen_allowed_depths_iterator(&screen); depth.rem > 0; xcb_depth_next(&depth))
        for (auto it = xcb_depth_visuals_iterator(depth.data); it.rem > 0; xcb_visualtype_next(&it))
            if (it.data->visual_id == screen.root_visual)
                return it.data->_class == XCB_VISUAL_CLASS_TRUE_COLOR && it.data->red_mask == 0xFF0000 &&
                       it.data->green_mask == 0xFF00 && it.data->blue_mask == 0xFF;
    return false;
}

void* X11CaptureLink::awaitReply(unsigned int sequence) {
    xcb_flush(connection);
    for (;;) {
        void* reply = nullptr;
        xcb_generic_error_t* error = nullptr;
        // Also true, without a reply, once the connection is lost.
        if (xcb_poll_for_reply(connection, sequence, &reply, &error)) {
            owned(error);
            return reply;
        }
        if (!patienceEnds && end.requested() != EndSignal::Request::none)
            patienceEnds = now() + patienceAtEnd;
        if (end.requested() == EndSignal::Request::abandon || (patienceEnds && now() >= *patienceEnds)) {
            xcb_discard_reply(connection, sequence);
            return nullptr;
        }
        poll(patienceEnds);
    }
}

bool X11CaptureLink::succeeded(xcb_void_cookie_t checked) {
    // Once a later request has been answered, the fate of the earlier one is known.
    if (!await<xcb_get_input_focus_reply_t>(xcb_get_input_focus(connection).sequence)) return false;
    xcb_generic_error_t* error = nullptr;
    void* reply = nullptr;
    if (!xcb_poll_for_reply(connection, checked.sequence, &reply, &error)) return false;
    return !owned(error) && !isLost();
}

X11Reply<xcb_generic_event_t> X11CaptureLink::nextEvent() {
    // Sending may read events, of which poll() would then tell nothing: so it comes first.
    xcb_flush(connection);
    if (!mayHaveArrived) return owned(xcb_poll_for_queued_event(connection));
    auto event = owned(xcb_poll_for_event(connection));
    mayHaveArrived = event != nullptr;
    return event;
}

void X11CaptureLink::sleep(std::optional<Nanoseconds> until) {
    if (!isLost()) poll(until);
}

void X11CaptureLink::sleepDeaf(Nanoseconds until) {
    poll(until, true);
    mayHaveArrived = true;
}

void X11CaptureLink::poll(std::optional<Nanoseconds> until, bool isDeaf) {
    timespec limit{};
    if (until) {
        const Nanoseconds left = std::max<Nanoseconds>(*until - now(), 0);
        limit = {.tv_sec = left / 1'000'000'000, .tv_nsec = left % 1'000'000'000};
    }
    // A negative descriptor is passed over.
    const int server = isDeaf ? -1 : xcb_get_file_descriptor(connection);
    pollfd descriptors[2] = {{server, POLLIN, 0}, {end.descriptor(), POLLIN, 0}};
    const int ready = ppoll(descriptors, 2, until ? &limit : nullptr, nullptr);
    if (ready <= 0) return;
    if (descriptors[0].revents != 0) mayHaveArrived = true;
    if (descriptors[1].revents != 0) end.acknowledge();
}

} // namespace clipwren
