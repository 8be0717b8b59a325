#pragma once

#include "encoding/ColorIndexer.h"
#include "encoding/FrameChange.h"

#include <cstdint>
#include <vector>

namespace clipwren {

// What a viewer of the animation sees at one moment: with few colours a frame, it is not always the picture
// that was recorded.
class ShownPicture {
public:
    explicit ShownPicture(PixelSize size);

    // Draws the changed pixels with the colours picked for them. Returns the indices of all pixels of the
    // change's rectangle, row by row; `transparent` where the picture stays as it is.
    std::vector<std::uint8_t> draw(const FrameChange& change, const IndexedColors& indexed,
                                   std::uint8_t transparent);

    Pixel color(int x, int y) const { return colors[offset(x, y)]; }

private:
    std::size_t offset(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(size.width) +
               static_cast<std::size_t>(x);
    }

    PixelSize size;
    std::vector<Pixel> colors;
};

} // namespace clipwren
