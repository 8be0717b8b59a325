#pragma once

#include "base/Image.h"

#include <cstddef>
#include <vector>

namespace clipwren {

// Colours as 0x00RRGGBB, of which an index of a GIF image picks one.
using Palette = std::vector<Pixel>;

constexpr std::size_t largestPalette = 256;

// The colour of a pixel on the black ground that a screen has behind everything.
constexpr Pixel opaqueColor(Pixel pixel) { return pixel & 0x00FFFFFF; }

} // namespace clipwren
