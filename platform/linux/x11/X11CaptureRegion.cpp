#include "platform/linux/x11/X11CaptureRegion.h"

#include <algorithm>
#include <cmath>

namespace clipwren {

namespace {

constexpr double largestCoordinate = 32767; // X11 counts pixels in signed 16 bits

// The parts of `rect` outside `hole`, which need not touch it: at most four.
std::vector<PixelRect> without(const PixelRect& rect, const PixelRect& hole) {
    const PixelRect common = rect.intersection(hole);
    if (common.isEmpty()) return {rect};
    std::vector<PixelRect> parts{
        {rect.x, rect.y, rect.width, common.y - rect.y},
        {rect.x, common.maxY(), rect.width, rect.maxY() - common.maxY()},
        {rect.x, common.y, common.x - rect.x, common.height},
        {common.maxX(), common.y, rect.maxX() - common.maxX(), common.height},
    };
    std::erase_if(parts, [](const PixelRect& part) { return part.isEmpty(); });
    return parts;
}

} // namespace

std::optional<PixelRect> nativeRegion(const NativeScreen& screen, const Rect& sourceRect) {
    const Rect pixels{sourceRect.x * screen.scale, sourceRect.y * screen.scale,
                      sourceRect.width * screen.scale, sourceRect.height * screen.scale};
    // Written so that what is not a number fails as well.
    for (const double value : {pixels.x, pixels.y})
        if (!(std::abs(value) <= largestCoordinate)) return std::nullopt;
    for (const double value : {pixels.width, pixels.height})
        if (!(value > 0 && value <= largestCoordinate)) return std::nullopt;
    PixelRect region = pixelsTouched(pixels);
    region.x += screen.pixels.x;
    region.y += screen.pixels.y;
    return region;
}

std::vector<PixelRect> visibleParts(std::span<const NativeScreen> screens, PixelSize root,
                                    const PixelRect& region) {
    std::vector<PixelRect> parts;
    for (const NativeScreen& screen : screens) {
        std::vector<PixelRect> fresh{
            screen.pixels.intersection({0, 0, root.width, root.height}).intersection(region)};
        if (fresh.front().isEmpty()) continue;
        fresh.front().x -= region.x;
        fresh.front().y -= region.y;
        for (const PixelRect& known : parts) {
            std::vector<PixelRect> rest;
            for (const PixelRect& piece : fresh)
                for (const PixelRect& part : without(piece, known))
                    rest.push_back(part);
            fresh = std::move(rest);
        }
        parts.insert(parts.end(), fresh.begin(), fresh.end());
    }
    return parts;
}

} // namespace clipwren
