#include "benchmarks/Scenes.h"

#include <algorithm>
#include <cmath>

namespace clipwren {

namespace {

constexpr int pictureCount = 45;

std::uint32_t channel(double value, int shift) {
    return static_cast<std::uint32_t>(std::clamp(value, 0.0, 255.0)) << shift;
}

} // namespace

VideoScene::VideoScene(xcb_connection_t* connection, xcb_window_t window, int width, int height,
                       std::uint8_t depth)
    : Scene(connection, window, width, height) {
    std::vector<double> texture(256 * 256);
    for (double& value : texture)
        value = static_cast<double>(random() % 9) - 4;
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int number = 0; number < pictureCount; ++number) {
        const double turn = 2 * 3.14159265 * number / pictureCount;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const double light =
                    128 + 60 * std::sin(x * 0.011 + turn) + 50 * std::cos(y * 0.017 - x * 0.005 + turn);
                const double fine =
                    texture[static_cast<std::size_t>((y + number * 3) % 256 * 256 + (x + number * 5) % 256)];
                pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                       static_cast<std::size_t>(x)] =
                    channel(light + fine, 16) |
                    channel(light * 0.8 + 20 * std::sin(turn + y * 0.02) + fine, 8) |
                    channel(220 - light * 0.7 + fine, 0);
            }
        const xcb_pixmap_t picture = xcb_generate_id(connection);
        xcb_create_pixmap(connection, depth, picture, window, static_cast<std::uint16_t>(width),
                          static_cast<std::uint16_t>(height));
        put(pixels, picture, depth);
        pictures.push_back(picture);
    }
    xcb_flush(connection);
}

void WallpaperScene::draw(int tick) {
    if (tick != 0) return;
    // Light and texture of every size, alike in all channels, and noise in each.
    constexpr int side = 256;
    std::vector<double> texture(side * side);
    for (double& value : texture)
        value = static_cast<double>(random() % 1000) / 1000 - 0.5;
    const auto smooth = [&](double x, double y) {
        const int left = static_cast<int>(x), top = static_cast<int>(y);
        const double right = x - left, bottom = y - top;
        const auto at = [&](int atX, int atY) {
            return texture[static_cast<std::size_t>(atY % side * side + atX % side)];
        };
        return (at(left, top) * (1 - right) + at(left + 1, top) * right) * (1 - bottom) +
               (at(left, top + 1) * (1 - right) + at(left + 1, top + 1) * right) * bottom;
    };
    std::vector<std::uint32_t> pixels;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            double light = 120;
            for (int size = 2, strength = 12; size <= 256; size *= 2, strength += 12)
                light +=
                    strength * smooth(static_cast<double>(x) / size + size, static_cast<double>(y) / size);
            const auto noise = [&] { return static_cast<double>(random() % 7) - 3; };
            pixels.push_back(channel(light * 1.1 + noise(), 16) | channel(light + noise(), 8) |
                             channel(light * 0.8 + 20 + noise(), 0));
        }
    put(pixels, window, depth);
}

} // namespace clipwren
