#pragma once

#include "base/Geometry.h"
#include "base/Image.h"

#include <vector>

namespace clipwren {

// A pointer's picture: premultiplied, with the pixel that points.
struct CursorImage {
    int width = 0;
    int height = 0;
    int hotX = 0;
    int hotY = 0;
    std::vector<Pixel> pixels; // width * height, row by row

    // What the picture covers when the pointer is at (x, y).
    PixelRect rect(int x, int y) const { return {x - hotX, y - hotY, width, height}; }
};

// The premultiplied `above` laid over the opaque `below`. Colours brighter than their alpha, which are no
// premultiplied ones, end at white.
inline Pixel blended(Pixel above, Pixel below) {
    const Pixel rest = 255 - (above >> 24);
    if (rest == 0) return above;
    Pixel result = 0xFF000000;
    for (int shift = 0; shift < 24; shift += 8) {
        const Pixel product = (below >> shift & 0xFF) * rest + 128;
        const Pixel sum = (above >> shift & 0xFF) + ((product + (product >> 8)) >> 8); // divided by 255
        result |= (sum > 255 ? 255 : sum) << shift;
    }
    return result;
}

} // namespace clipwren
