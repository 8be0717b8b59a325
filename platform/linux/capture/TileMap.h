#pragma once

#include "base/Geometry.h"

#include <cstdint>
#include <vector>

namespace clipwren {

// Which parts of a picture something holds for, in tiles of the size of an Image's blocks. However many
// rectangles go in, few come out.
class TileMap {
public:
    // Nothing is marked at first.
    explicit TileMap(PixelSize picture);

    // Marks every tile that the rectangle touches; what lies outside of the picture is ignored.
    void mark(const PixelRect& rect);
    void markAll();
    void clear();
    bool isEmpty() const { return markedCount == 0; }

    // The marked tiles as rectangles that do not overlap and do not leave the picture.
    std::vector<PixelRect> rects() const;

private:
    PixelSize picture;
    int columns;
    int rows;
    int markedCount = 0;
    std::vector<std::uint8_t> marks; // row by row
};

// Joins rectangles where one larger costs less than two: reading a rectangle costs as much as reading
// `overhead` pixels more. The result covers at least what was given; its rectangles may overlap.
std::vector<PixelRect> joined(std::vector<PixelRect> rects, std::int64_t overhead);

} // namespace clipwren
