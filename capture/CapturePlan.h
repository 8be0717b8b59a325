#pragma once

#include "platform/ScreenCapture.h"
#include "platform/Screens.h"
#include "settings/RecordingFPS.h"
#include "settings/RecordingResolution.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace clipwren {

// Which display is captured, which part of it and at which size: plain computations without any state.

// The first screen, in the order given, that shares an area with the region, otherwise the fallback.
std::optional<Screen> chooseScreen(std::span<const Screen> screens, const std::optional<Screen>& fallback,
                                   const Rect& region);

// The number of the screen's display; the main display's where the screen has none.
std::uint32_t displayID(const Screen& screen, std::uint32_t mainDisplayID);

// The region (global points, y up) in points of the screen's display, origin at its top left, y down. Not
// clipped to the display.
Rect sourceRect(const Rect& region, const Rect& screenFrame);

// The frames' size in pixels: the region's size in points, scaled down to `maximumWidth` if it is wider and
// never enlarged, each side rounded to the nearest whole number, halves away from zero, and at least 2. A
// size that is not finite or does not fit is a fatal error.
PixelSize outputSize(const Size& region, std::int64_t maximumWidth);

// The shareable windows whose numbers are to be left out, in their own order; numbers that match none are
// ignored. A number that is no 32-bit identifier is a fatal error.
std::vector<ShareableWindow> excludedWindows(std::span<const ShareableWindow> windows,
                                             std::span<const std::int64_t> numbers);

StreamConfiguration streamConfiguration(const Rect& region, const Rect& screenFrame,
                                        RecordingResolution resolution, RecordingFPS fps);

} // namespace clipwren
