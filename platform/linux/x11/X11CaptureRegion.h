#pragma once

#include "base/Geometry.h"
#include "platform/linux/x11/ScreenLayout.h"

#include <optional>
#include <span>
#include <vector>

namespace clipwren {

// Which pixels of the root window a stream shows: pure functions.

// The native pixels of a source rectangle (points of the screen, origin at its top left, y down): each pixel
// that it touches. None for a rectangle without an area and one whose picture no X server could hold.
std::optional<PixelRect> nativeRegion(const NativeScreen& screen, const Rect& sourceRect);

// The parts of the region (native) that a monitor shows, counted from the region's top left; they do not
// overlap. What is left is black: outside the root window there is nothing, and what the server keeps between
// monitors nobody has ever seen.
std::vector<PixelRect> visibleParts(std::span<const NativeScreen> screens, PixelSize root,
                                    const PixelRect& region);

} // namespace clipwren
