#include "encoding/ColorCensus.h"

#include <bit>

namespace clipwren {

ColorCensus::ColorCensus(std::size_t limit)
    : limit(limit),
      slots(std::bit_ceil(4 * limit)),
      shift(32 - std::countr_zero(slots.size())) {}

std::optional<ColorCensus> ColorCensus::take(std::span<const Pixel> colors, std::size_t limit) {
    ColorCensus census(limit);
    for (std::size_t i = 0; i < colors.size();) {
        // Neighbours are often equal.
        const std::size_t begin = i;
        const Pixel color = colors[i];
        while (i < colors.size() && colors[i] == color)
            ++i;
        if (!census.add(color, i - begin)) return std::nullopt;
    }
    return census;
}

bool ColorCensus::add(Pixel color, std::size_t count) {
    std::uint16_t& slot = slots[slotOf(color)];
    if (slot == 0) {
        if (found.size() == limit) return false;
        found.push_back({color, 0});
        slot = static_cast<std::uint16_t>(found.size());
    }
    found[slot - std::size_t{1}].count += static_cast<std::uint32_t>(count);
    return true;
}

std::size_t ColorCensus::slotOf(Pixel color) const {
    std::size_t slot = (color * 2654435761u) >> shift;
    while (slots[slot] != 0 && found[slots[slot] - 1u].color != color)
        slot = (slot + 1) & (slots.size() - 1);
    return slot;
}

} // namespace clipwren
