#pragma once

#include "base/Image.h"
#include "encoding/FrameChange.h"
#include "encoding/Palette.h"

#include <cstdint>
#include <span>

namespace clipwren {

// Where colours change slowly from pixel to pixel, mixes two entries of the palette, so that no bands show.
// Which pixel gets which of the two depends on its colour and its place alone: what stands still stays still.
// Text, edges and flat areas are left alone, and what is only healed.
//
// `indices` are the nearest entries for the change's pixels, in the order of its runs.
void ditherGradients(const Image& image, const FrameChange& change, const Palette& palette,
                     std::span<std::uint8_t> indices);

} // namespace clipwren
