#pragma once

#include "encoding/Palette.h"
#include "encoding/PerceptualColor.h"

#include <cstddef>
#include <vector>

namespace clipwren {

// A colour that stands for `weight` pixels.
struct WeightedColor {
    WeightedColor(Pixel color, float weight) : color(color), weight(weight), place(perceptualColor(color)) {}

    Pixel color;
    float weight;
    PerceptualColor place; // of the colour
};

// At most `limit` different colours, 1 to 256, that stand for all those given, of which there is at least
// one: few pixels end up far from the nearest of them. A colour that many pixels share is taken over exactly.
// Others are left out that are not so many just noticeable differences apart from a more frequent one.
Palette quantize(const std::vector<WeightedColor>& colors, std::size_t limit, float apart = 0);

// The same, but the farthest of all colours end up as near as possible, whatever they weigh less.
Palette quantizeEvenly(const std::vector<WeightedColor>& colors, std::size_t limit);

} // namespace clipwren
