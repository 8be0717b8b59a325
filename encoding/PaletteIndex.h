#pragma once

#include "encoding/Palette.h"

#include <array>
#include <cstdint>
#include <optional>

namespace clipwren {

// Finds which palette entry has exactly some colour.
class PaletteIndex {
public:
    PaletteIndex() { slots.fill({noColor, 0}); }
    // Of equal entries the first is found; the one that leaves pixels as they are is not.
    explicit PaletteIndex(const Palette& palette, std::optional<std::uint8_t> transparent = std::nullopt);

    // At most 256 different colours; one that is known already keeps its index.
    void add(Pixel color, std::uint8_t index);

    std::optional<std::uint8_t> find(Pixel color) const {
        const Slot& slot = slots[slotOf(color)];
        if (slot.color == noColor) return std::nullopt;
        return slot.index;
    }

private:
    static constexpr int hashBits = 10;
    static constexpr Pixel noColor = 0xFFFFFFFF;

    struct Slot {
        Pixel color;
        std::uint8_t index;
    };

    std::size_t slotOf(Pixel color) const {
        std::size_t slot = (color * 2654435761u) >> (32 - hashBits);
        while (slots[slot].color != noColor && slots[slot].color != color)
            slot = (slot + 1) & ((std::size_t{1} << hashBits) - 1);
        return slot;
    }

    std::array<Slot, std::size_t{1} << hashBits> slots;
};

} // namespace clipwren
