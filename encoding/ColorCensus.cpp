#include "encoding/ColorCensus.h"

#include <bit>

namespace clipwren {

ColorCensus::ColorCensus(std::size_t limit)
    : limit(limit),
      slots(std::bit_ceil(4 * limit)),
      shift(32 - std::countr_zero(slots.size())) {}

std::optional<ColorCensus> ColorCensus::take(std::span<const Pixel> colors, std::size_t limit) {
    ColorCensus census(limit);
    census.numbers.reserve(colors.size());
    for (std::size_t i = 0; i < colors.size();) {
        const std::optional<std::uint16_t> number = census.numberOf(colors[i]);
        if (!number) return std::nullopt;
        // Neighbours are often equal.
        const std::size_t begin = i;
        const Pixel color = colors[i];
        while (i < colors.size() && colors[i] == color)
            ++i;
        census.numbers.insert(census.numbers.end(), i - begin, *number);
        census.found[*number].count += static_cast<std::uint32_t>(i - begin);
    }
    return census;
}

bool ColorCensus::add(Pixel color, std::size_t count) {
    const std::optional<std::uint16_t> number = numberOf(color);
    if (number) found[*number].count += static_cast<std::uint32_t>(count);
    return number.has_value();
}

std::optional<std::uint16_t> ColorCensus::numberOf(Pixel color) {
    std::size_t slot = (color * 2654435761u) >> shift;
    while (slots[slot] != 0 && found[slots[slot] - 1u].color != color)
        slot = (slot + 1) & (slots.size() - 1);
    if (slots[slot] == 0) {
        if (found.size() == limit) return std::nullopt;
        found.push_back({color, 0});
        slots[slot] = static_cast<std::uint16_t>(found.size());
    }
    return static_cast<std::uint16_t>(slots[slot] - 1);
}

} // namespace clipwren
