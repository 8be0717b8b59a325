#include "platform/linux/x11/X11RegionPlace.h"

#include "platform/linux/x11/X11CaptureLink.h"
#include "platform/linux/x11/X11CaptureRegion.h"
#include "platform/linux/x11/X11Screens.h"

#include <xcb/randr.h>

#include <algorithm>
#include <utility>

namespace clipwren {

X11RegionPlace::X11RegionPlace(X11CaptureLink& link, std::uint32_t displayID, const Rect& sourceRect)
    : link(link),
      displayID(displayID),
      sourceRect(sourceRect) {
    if (link.has(xcb_randr_id)) {
        changeEvent = xcb_get_extension_data(link.raw(), &xcb_randr_id)->first_event;
        xcb_randr_select_input(link.raw(), link.root(),
                               XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                                   XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    }
    const std::uint32_t structure = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(link.raw(), link.root(), XCB_CW_EVENT_MASK, &structure);
}

bool X11RegionPlace::handle(const xcb_generic_event_t& event) {
    const int type = event.response_type & 0x7F;
    // A monitor that a person has defined shows only as a changed root window.
    const bool isChange = type == XCB_CONFIGURE_NOTIFY ||
                          (changeEvent != 0 && (type == changeEvent + XCB_RANDR_SCREEN_CHANGE_NOTIFY ||
                                                type == changeEvent + XCB_RANDR_NOTIFY));
    isStale |= isChange;
    return isChange;
}

std::optional<PlatformError> X11RegionPlace::find() {
    const auto found = locate();
    if (!found) return found.error();
    if (*found == Change::away) return PlatformError{"The recorded display is no longer there."};
    return std::nullopt;
}

Expected<X11RegionPlace::Change, PlatformError> X11RegionPlace::follow() {
    if (!isStale && !awaySince) return Change::none;
    isStale = false;
    auto change = locate();
    if (!change) return change;
    if (*change != Change::away) {
        // Everything has been arranged anew meanwhile.
        return std::exchange(awaySince, std::nullopt) ? Change::moved : *change;
    }
    const Nanoseconds now = X11CaptureLink::now();
    if (!awaySince) awaySince = now;
    if (now - *awaySince >= longestAbsence)
        return Unexpected{PlatformError{"The recorded display is no longer there."}};
    return Change::away;
}

Expected<X11RegionPlace::Change, PlatformError> X11RegionPlace::locate() {
    const auto screens = readScreens(link.raw(), link.screen(),
                                     [this](unsigned int sequence) { return link.await<void>(sequence); });
    const auto root =
        link.await<xcb_get_geometry_reply_t>(xcb_get_geometry(link.raw(), link.root()).sequence);
    if (link.isLost()) return Unexpected{PlatformError{"The display server ended the connection."}};
    if (!root) {
        // Nobody waits for an answer any more once an end is asked for.
        if (link.endRequested() != EndSignal::Request::none) return Change::none;
        return Unexpected{PlatformError{"The display server does not tell the size of the screen."}};
    }
    const auto screen = std::ranges::find(screens, displayID, &NativeScreen::id);
    if (screen == screens.end()) return Change::away;
    const auto placed = nativeRegion(*screen, sourceRect);
    if (!placed) return Unexpected{PlatformError{"The region cannot be recorded on this display."}};
    if (!place.isEmpty() && (placed->width != place.width || placed->height != place.height))
        return Unexpected{PlatformError{"The scale of the recorded display has changed."}};
    const PixelRect before = std::exchange(place, *placed);
    auto parts = visibleParts(screens, {root->width, root->height}, place);
    const bool isShownAsBefore = std::exchange(shownParts, parts) == parts;
    if (place != before) return Change::moved;
    return isShownAsBefore ? Change::none : Change::shown;
}

} // namespace clipwren
