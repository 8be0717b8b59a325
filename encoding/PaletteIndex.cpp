#include "encoding/PaletteIndex.h"

namespace clipwren {

PaletteIndex::PaletteIndex(const Palette& palette, std::optional<std::uint8_t> transparent) : PaletteIndex() {
    for (std::size_t i = 0; i < palette.size(); ++i)
        if (transparent != i) add(palette[i], static_cast<std::uint8_t>(i));
}

void PaletteIndex::add(Pixel color, std::uint8_t index) {
    Slot& slot = slots[slotOf(color)];
    if (slot.color == noColor) slot = {color, index};
}

} // namespace clipwren
