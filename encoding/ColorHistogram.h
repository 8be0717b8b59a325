#pragma once

#include "encoding/ColorCensus.h"
#include "encoding/PaletteQuantizer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace clipwren {

// Few colours that stand for very many pixels of very many colours. Near ones are taken together, but not
// those of flat areas, which are recognised by rows of equal neighbours.
class ColorHistogram {
public:
    // Colours are near that agree in so many upper bits of each component, 1 to 7.
    explicit ColorHistogram(int bits = 5);

    // Counts pixels as they lie side by side.
    void addNeighbors(std::span<const Pixel> colors);

    // Counts pixels of one colour together with those of near ones.
    void addNear(Pixel color, std::size_t times) {
        binOf(color).add(color, static_cast<std::uint32_t>(times));
    }

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
    // Inline: it is asked for every pixel.
    Bin& binOf(Pixel color) {
        std::uint32_t& number = numbers[(color >> redShift & redMask) | (color >> greenShift & greenMask) |
                                        (color >> blueShift & blueMask)];
        if (number == 0) number = addBin();
        return bins[number - 1];
    }
    std::uint32_t addBin();

    int redShift, greenShift, blueShift;
    Pixel redMask, greenMask, blueMask;
    ColorCensus exact{mostExactColors};
    std::vector<std::uint32_t> numbers; // of the bins that are in use, plus 1
    std::vector<Bin> bins;
};

} // namespace clipwren
