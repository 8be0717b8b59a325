#pragma once

#include "base/Image.h"

#include <vector>

namespace clipwren {

// A picture of one opaque colour.
inline Image plainImage(int width, int height, Pixel color = 0xFF336699) {
    const std::vector<Pixel> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
                                    color);
    return Image({pixels.data(), width, height, width});
}

// All pixels of a picture, row by row.
inline std::vector<Pixel> pixelsOf(const Image& image) {
    std::vector<Pixel> pixels(static_cast<std::size_t>(image.width()) *
                              static_cast<std::size_t>(image.height()));
    image.copy(image.bounds(), pixels.data(), image.width());
    return pixels;
}

} // namespace clipwren
