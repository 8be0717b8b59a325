#include "platform/linux/x11/ScreenLayout.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace clipwren {

namespace {

constexpr double pointsPerInch = 96;
constexpr double largestScale = 10;
constexpr double conversionError = 1e-6;

int limited(double value) {
    // Far beyond any screen, and sums of two still fit.
    return static_cast<int>(std::clamp(value, -1e9, 1e9));
}

int pixelBelow(double value) { return limited(std::floor(value + conversionError)); }
int pixelAbove(double value) { return limited(std::ceil(value - conversionError)); }

} // namespace

Rect NativeScreen::localBounds() const {
    const double height = pixels.height / scale;
    return {0, frame.height - height, pixels.width / scale, height};
}

Point NativeScreen::localPoint(int x, int y) const {
    return {x / scale, localBounds().y + (pixels.height - y) / scale};
}

PixelRect NativeScreen::pixelsTouching(const Rect& localRect) const {
    const Rect fractional{localRect.x * scale, pixels.height - (localRect.maxY() - localBounds().y) * scale,
                          localRect.width * scale, localRect.height * scale};
    return pixelsTouched(fractional).intersection({0, 0, pixels.width, pixels.height});
}

PixelRect pixelsTouched(const Rect& fractionalPixels) {
    const int left = pixelBelow(fractionalPixels.minX());
    const int top = pixelBelow(fractionalPixels.minY());
    return {left, top, std::max(pixelAbove(fractionalPixels.maxX()) - left, 0),
            std::max(pixelAbove(fractionalPixels.maxY()) - top, 0)};
}

std::vector<NativeScreen> layOutScreens(std::vector<NativeMonitor> monitors, double scale) {
    const auto primary = std::find_if(monitors.begin(), monitors.end(),
                                      [](const NativeMonitor& monitor) { return monitor.isPrimary; });
    if (primary != monitors.end()) std::rotate(monitors.begin(), primary, std::next(primary));
    std::vector<NativeMonitor> kept;
    for (std::size_t i = 0; i < monitors.size(); ++i) {
        const PixelRect& pixels = monitors[i].pixels;
        if (pixels.isEmpty()) continue;
        bool isCovered = false;
        for (std::size_t other = 0; other < monitors.size(); ++other) {
            // Of equal ones the first stays.
            isCovered |= other != i && monitors[other].pixels.intersection(pixels) == pixels &&
                         (monitors[other].pixels != pixels || other < i);
        }
        if (!isCovered) kept.push_back(monitors[i]);
    }

    std::vector<NativeScreen> screens;
    for (const NativeMonitor& monitor : kept) {
        const PixelRect& origin = kept.front().pixels;
        const PixelRect& pixels = monitor.pixels;
        screens.push_back({.id = monitor.id,
                           .pixels = pixels,
                           .frame = {(pixels.x - origin.x) / scale, (origin.maxY() - pixels.maxY()) / scale,
                                     pixels.width / scale, pixels.height / scale},
                           .scale = scale});
    }
    return screens;
}

std::optional<NativeScreen> screenWithFrame(const std::vector<NativeScreen>& screens, const Rect& frame) {
    constexpr double largestSide = 32767; // of an X window
    if (screens.empty()) return std::nullopt;
    const NativeScreen& primary = screens.front();
    const double scale = primary.scale;
    const auto nearest = [](double value) { return limited(std::round(value)); };
    const PixelRect pixels{primary.pixels.x + nearest(frame.x * scale),
                           primary.pixels.maxY() - nearest(frame.maxY() * scale),
                           nearest(std::min(frame.width * scale, largestSide)),
                           nearest(std::min(frame.height * scale, largestSide))};
    if (pixels.isEmpty()) return std::nullopt;
    for (const NativeScreen& screen : screens)
        if (screen.pixels == pixels) return screen;
    return NativeScreen{.pixels = pixels, .frame = frame, .scale = scale};
}

double scaleFromResources(std::string_view resources) {
    constexpr std::string_view key = "Xft.dpi:";
    while (!resources.empty()) {
        const std::string_view line = resources.substr(0, resources.find('\n'));
        resources.remove_prefix(std::min(line.size() + 1, resources.size()));
        if (!line.starts_with(key)) continue;
        const std::size_t begin = line.find_first_not_of(" \t", key.size());
        if (begin == std::string_view::npos) return 1;
        double dotsPerInch = 0;
        std::from_chars(line.data() + begin, line.data() + line.size(), dotsPerInch);
        const double scale = dotsPerInch / pointsPerInch;
        return scale >= 1 && scale <= largestScale ? scale : 1;
    }
    return 1;
}

} // namespace clipwren
