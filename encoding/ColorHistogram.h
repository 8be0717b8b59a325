#pragma once

#include "encoding/PaletteQuantizer.h"

#include <span>
#include <vector>

namespace clipwren {

// Few colours that stand for very many pixels of very many colours. Near ones are taken together, five bits a
// component, but not those of flat areas, which are recognised by rows of equal neighbours.
std::vector<WeightedColor> summarizedColors(std::span<const Pixel> colors);

} // namespace clipwren
