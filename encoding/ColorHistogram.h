#pragma once

#include "encoding/ColorCensus.h"
#include "encoding/PaletteQuantizer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace clipwren {

// Few colours that stand for very many pixels of very many colours. Near ones are taken together, five bits a
// component, but not those of flat areas, which are recognised by rows of equal neighbours.
class ColorHistogram {
public:
    // Counts pixels as they lie side by side.
    void addNeighbors(std::span<const Pixel> colors);

    // Counts pixels of one colour that is to stay apart from near ones, as long as there is room.
    void addExact(Pixel color, std::size_t times);

    std::vector<WeightedColor> summary() const;

private:
    struct Bin {
        std::uint32_t count = 0;
        std::array<std::uint32_t, 3> sums{}; // blue, green, red

        void add(Pixel color, std::uint32_t times);
        Pixel mean() const;
    };
    static constexpr std::size_t mostExactColors = 8192;
    static std::size_t binOf(Pixel color) {
        return (color >> 9 & 0x7C00) | (color >> 6 & 0x03E0) | (color >> 3 & 0x001F);
    }

    ColorCensus exact{mostExactColors};
    std::vector<Bin> bins = std::vector<Bin>(std::size_t{1} << 15);
};

} // namespace clipwren
