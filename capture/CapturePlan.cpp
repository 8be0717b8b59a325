#include "capture/CapturePlan.h"

#include "base/FatalError.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_set>

namespace clipwren {

namespace {

int outputSide(double length) {
    const double rounded = std::round(length);
    if (!std::isfinite(rounded) || std::fabs(rounded) > std::numeric_limits<int>::max())
        fatalError("the region's size cannot be expressed in pixels");
    return std::max(static_cast<int>(rounded), 2);
}

} // namespace

std::optional<Screen> chooseScreen(std::span<const Screen> screens, const std::optional<Screen>& fallback,
                                   const Rect& region) {
    const auto found =
        std::ranges::find_if(screens, [&](const Screen& screen) { return screen.frame.intersects(region); });
    return found != screens.end() ? *found : fallback;
}

std::uint32_t displayID(const Screen& screen, std::uint32_t mainDisplayID) {
    return screen.screenNumber.value_or(mainDisplayID);
}

Rect sourceRect(const Rect& region, const Rect& screenFrame) {
    return {region.minX() - screenFrame.minX(), screenFrame.maxY() - region.maxY(), region.width,
            region.height};
}

PixelSize outputSize(const Size& region, std::int64_t maximumWidth) {
    const double scale = std::min(static_cast<double>(maximumWidth) / region.width, 1.0);
    return {outputSide(region.width * scale), outputSide(region.height * scale)};
}

std::vector<ShareableWindow> excludedWindows(std::span<const ShareableWindow> windows,
                                             std::span<const std::int64_t> numbers) {
    std::unordered_set<std::uint32_t> identifiers;
    for (const std::int64_t number : numbers) {
        if (number < 0 || number > std::numeric_limits<std::uint32_t>::max())
            fatalError("a window number is no 32-bit identifier");
        identifiers.insert(static_cast<std::uint32_t>(number));
    }
    std::vector<ShareableWindow> excluded;
    std::ranges::copy_if(windows, std::back_inserter(excluded), [&](const ShareableWindow& window) {
        return identifiers.contains(window.windowID);
    });
    return excluded;
}

StreamConfiguration streamConfiguration(const Rect& region, const Rect& screenFrame,
                                        RecordingResolution resolution, RecordingFPS fps) {
    const PixelSize size = outputSize({region.width, region.height}, rawValue(resolution));
    return {.sourceRect = sourceRect(region, screenFrame),
            .width = size.width,
            .height = size.height,
            .destinationRect = {0, 0, static_cast<double>(size.width), static_cast<double>(size.height)},
            .scalesToFit = true,
            .minimumFrameInterval = {1, static_cast<std::int32_t>(rawValue(fps))},
            .queueDepth = 6,
            .pixelFormat = pixelFormatBGRA,
            .showsCursor = true,
            .capturesAudio = false};
}

} // namespace clipwren
