#pragma once

#include "base/Geometry.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace clipwren {

// How the monitors of an X server become the screens of the core: pure functions, no server asked.
//
// *Native* coordinates are the pixels of the root window, origin at its top left, y down. One factor, pixels
// a point, holds for the whole server, so that neighbouring monitors stay neighbours in points.

struct NativeMonitor {
    std::uint32_t id = 0; // the atom of the monitor's name: the same for all clients of the server
    PixelRect pixels;     // native
    bool isPrimary = false;
};

struct NativeScreen {
    std::uint32_t id = 0;
    PixelRect pixels; // native
    Rect frame;       // global points
    double scale = 1; // pixels a point

    // The local points that the screen shows: those of the frame. Where the pixels have become others since
    // the frame was read, local points stay where they are as seen from the screen's top left.
    Rect localBounds() const;

    // Of a pixel's top left corner, counted from the screen's own top left and possibly beyond the screen:
    // local points, origin at the screen's bottom left, y up.
    Point localPoint(int x, int y) const;

    // The whole pixels that a rectangle of local points touches, counted from the screen's own top left and
    // cut to the screen.
    PixelRect pixelsTouching(const Rect& localRect) const;

    friend bool operator==(const NativeScreen&, const NativeScreen&) = default;
};

// The whole pixels that a rectangle of fractional pixels touches. What conversions leave of an error, a
// millionth of a pixel, adds none.
PixelRect pixelsTouched(const Rect& fractionalPixels);

// The primary monitor first (the first one, when none is marked), the others in the given order. Monitors
// without an area are left out, and so are those that lie wholly inside another: mirrored ones.
std::vector<NativeScreen> layOutScreens(std::vector<NativeMonitor> monitors, double scale);

// A screen with that frame (global points), which need not be one of `screens`: where they put it. None
// without any screens or when it has no pixels.
std::optional<NativeScreen> screenWithFrame(const std::vector<NativeScreen>& screens, const Rect& frame);

// Pixels a point as the resource database of the X server tells it: Xft.dpi / 96. Without a sensible value,
// and under 96, it is 1.
double scaleFromResources(std::string_view resources);

} // namespace clipwren
