#pragma once

#include "base/Image.h"

#include <vector>

namespace clipwren {

// A picture to draw on in a test, and to make Images of.
struct TestPicture {
    int width;
    int height;
    std::vector<Pixel> pixels; // opaque

    TestPicture(int width, int height, Pixel color = 0xFF000000)
        : width(width),
          height(height),
          pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), color) {}

    Pixel& at(int x, int y) {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }

    void fill(const PixelRect& rect, Pixel color) {
        for (int y = rect.y; y < rect.maxY(); ++y)
            for (int x = rect.x; x < rect.maxX(); ++x)
                at(x, y) = color;
    }

    PixelView view() const { return {pixels.data(), width, height, width}; }
    Image image() const { return Image(view()); }
    // Shares what did not change.
    Image imageAfter(const Image& previous) const {
        return previous.replacing(std::vector{Image::Patch{{0, 0, width, height}, pixels.data(), width}});
    }

    // Without alpha, as a decoded GIF has them.
    std::vector<Pixel> colors() const {
        std::vector<Pixel> result = pixels;
        for (Pixel& pixel : result)
            pixel &= 0x00FFFFFF;
        return result;
    }
};

} // namespace clipwren
