#pragma once

#include "encoding/LzwEncoder.h"

#include <cstdint>
#include <span>

namespace clipwren {

// Shorter codes do where only the first entries of a palette are used: drops the choices that would need
// longer ones; `transparency` is an index too. Returns the LZW minimum code size for the image.
int useShortCodes(std::span<IndexChoice> indices, std::uint8_t transparency);

} // namespace clipwren
