#pragma once

#include "base/Expected.h"
#include "base/Geometry.h"
#include "platform/PlatformError.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace clipwren {

class X11CaptureLink;

// Where a region of a display lies on the root window: it stays at its place on the display, wherever that
// goes.
class X11RegionPlace {
public:
    using Nanoseconds = std::int64_t;

    enum class Change {
        none,
        shown, // other parts of it are visible
        moved, // with its display
        away,  // the display is not there, and may come back
    };

    // The region in points of the display, from its top left. From here on changes are noticed. The link
    // outlives this object.
    X11RegionPlace(X11CaptureLink& link, std::uint32_t displayID, const Rect& sourceRect);

    // Finds the region for the first time: the display has to be there.
    std::optional<PlatformError> find();

    // Returns whether the event is about the screens.
    bool handle(const xcb_generic_event_t& event);
    // Something tells that the screens may have changed: `follow` will look.
    void doubt() { isStale = true; }

    // Looks where the region is now, if it may have changed. An error when it is nowhere any more: a display
    // may be away for `longestAbsence`, as while the layout of the monitors is being changed step by step.
    Expected<Change, PlatformError> follow();
    static constexpr Nanoseconds longestAbsence = 2'000'000'000;

    bool isAway() const { return awaySince.has_value(); }

    // In root pixels. Its size never changes.
    const PixelRect& region() const { return place; }
    // What a monitor shows of it, counted from its top left.
    const std::vector<PixelRect>& visible() const { return shownParts; }

private:
    Expected<Change, PlatformError> locate();

    X11CaptureLink& link;
    const std::uint32_t displayID;
    const Rect sourceRect;
    PixelRect place;
    std::vector<PixelRect> shownParts;
    std::uint8_t changeEvent = 0; // the first of RandR's; 0 without
    bool isStale = false;
    std::optional<Nanoseconds> awaySince;
};

} // namespace clipwren
