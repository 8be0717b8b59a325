#pragma once

#include "base/Image.h"

#include <cstdint>

namespace clipwren {

// The part of the block codec for blocks of many colours. Each pixel is predicted channel by channel, and
// what the prediction misses is stored.

// Both return where they ended. `packed` has room for the largest block.
std::uint8_t* packPlanes(const Pixel* pixels, bool isOpaque, std::uint8_t* packed);
const std::uint8_t* unpackPlanes(const std::uint8_t* packed, bool isOpaque, Pixel* pixels);

// About how many bytes an opaque block takes that way.
int estimatedPlanesSize(const Pixel* pixels);

} // namespace clipwren
