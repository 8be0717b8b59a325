#include "benchmarks/Scenes.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

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
        // In strips, since a request has a largest size.
        constexpr int strip = 16;
        for (int y = 0; y < height; y += strip) {
            const int rows = std::min(strip, height - y);
            xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, picture, graphics,
                          static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(rows), 0,
                          static_cast<std::int16_t>(y), 0, depth,
                          static_cast<std::uint32_t>(width * rows * 4),
                          reinterpret_cast<const std::uint8_t*>(pixels.data() +
                                                                static_cast<std::ptrdiff_t>(y) * width));
        }
        pictures.push_back(picture);
    }
    xcb_flush(connection);
}

} // namespace clipwren
