#pragma once

#include "encoding/Palette.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace clipwren {

// Pixels by their number in a palette.
struct IndexedColors {
    Palette palette;
    std::vector<std::uint8_t> indices;
};

// Chooses a palette of at most `limit` colours, 1 to 256, for the pixels, of which there is at least one, and
// picks an entry for each. With no more colours than that, every pixel keeps its own; otherwise equal colours
// still become equal, wherever they are, so that flat areas stay flat.
IndexedColors indexColors(std::span<const Pixel> colors, std::size_t limit);

} // namespace clipwren
