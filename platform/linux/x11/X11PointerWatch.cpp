#include "platform/linux/x11/X11PointerWatch.h"

#include "platform/linux/x11/X11CaptureLink.h"

#include <xcb/xfixes.h>
#include <xcb/xinput.h>

#include <utility>

namespace clipwren {

X11PointerWatch::X11PointerWatch(X11CaptureLink& link) : link(link) {
    const auto* fixes = xcb_get_extension_data(link.raw(), &xcb_xfixes_id);
    shapeEvent = static_cast<std::uint8_t>(fixes->first_event + XCB_XFIXES_CURSOR_NOTIFY);
    xcb_xfixes_select_cursor_input(link.raw(), link.root(), XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);
    if (!link.has(xcb_input_id)) return;
    // From 2.1 on, motion is reported also while another program has grabbed the pointer.
    const auto version =
        link.await<xcb_input_xi_query_version_reply_t>(xcb_input_xi_query_version(link.raw(), 2, 2).sequence);
    if (version && version->major_version == 2 && version->minor_version >= 1)
        inputOpcode = xcb_get_extension_data(link.raw(), &xcb_input_id)->major_opcode;
}

bool X11PointerWatch::handle(const xcb_generic_event_t& event) {
    const int type = event.response_type & 0x7F;
    if (type == shapeEvent) {
        shapeIsNew = true;
        return true;
    }
    if (type != XCB_GE_GENERIC || inputOpcode == 0) return false;
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    if (generic.extension != inputOpcode || generic.event_type != XCB_INPUT_RAW_MOTION) return false;
    if (!follows) listen(false);
    follows = true;
    lastMoved = X11CaptureLink::now();
    return true;
}

X11PointerWatch::Nanoseconds X11PointerWatch::dueAt(const FramePacer& pacer) const {
    return follows || shapeIsNew ? pacer.dueForPointer() : lastLook + restInterval;
}

void X11PointerWatch::ask() {
    placeRequest = xcb_query_pointer(link.raw(), link.root()).sequence;
    asksForShape = std::exchange(shapeIsNew, false);
    if (asksForShape) shapeRequest = xcb_xfixes_get_cursor_image(link.raw()).sequence;
}

bool X11PointerWatch::take(Nanoseconds now) {
    const auto place = link.await<xcb_query_pointer_reply_t>(placeRequest);
    if (asksForShape) knownShape = takeShape();
    if (!place) return false;
    lastLook = now;
    visibleShape = place->same_screen ? knownShape : nullptr;
    const bool moved = placeX != place->root_x || placeY != place->root_y;
    placeX = place->root_x;
    placeY = place->root_y;
    if (moved) {
        lastMoved = now;
        if (!follows) listen(false);
        follows = true;
    } else if (follows && inputOpcode != 0 && now - lastMoved > restAfter) {
        listen(true);
        follows = false;
    }
    return true;
}

// None also where the server shows no pointer at all, which it answers with an error.
std::shared_ptr<const CursorImage> X11PointerWatch::takeShape() {
    const auto reply = link.await<xcb_xfixes_get_cursor_image_reply_t>(shapeRequest);
    if (!reply) return nullptr;
    const auto count = std::size_t{reply->width} * reply->height;
    if (std::size_t{reply->length} < count || count == 0) return nullptr;
    const Pixel* pixels = xcb_xfixes_get_cursor_image_cursor_image(reply.get());
    return std::make_shared<const CursorImage>(CursorImage{.width = reply->width,
                                                           .height = reply->height,
                                                           .hotX = reply->xhot,
                                                           .hotY = reply->yhot,
                                                           .pixels = {pixels, pixels + count}});
}

void X11PointerWatch::listen(bool toMotion) {
    if (inputOpcode == 0) return;
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t bits;
    } mask{{.deviceid = XCB_INPUT_DEVICE_ALL_MASTER, .mask_len = 1},
           toMotion ? std::uint32_t{XCB_INPUT_XI_EVENT_MASK_RAW_MOTION} : 0};
    xcb_input_xi_select_events(link.raw(), link.root(), 1, &mask.head);
}

} // namespace clipwren
