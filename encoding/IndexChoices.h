#pragma once

#include "encoding/LzwEncoder.h"

#include <cstdint>
#include <span>

namespace clipwren {

// Where pixels may stay as they are or be drawn once more, decides that those of long rows stay and those of
// short ones are drawn: nearly as small as trying out both, and much faster. The pixels of an image, in which
// `transparency` leaves them as they are.
void decideStaying(std::span<IndexChoice> indices, std::uint8_t transparency);

// Shorter codes do where only the first entries of a palette are used: drops the choices that would need
// longer ones. Returns the LZW minimum code size for the image.
int useShortCodes(std::span<IndexChoice> indices, std::uint8_t transparency);

} // namespace clipwren
