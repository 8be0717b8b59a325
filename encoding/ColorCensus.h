#pragma once

#include "encoding/Palette.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace clipwren {

// The distinct colours among many pixels and how often each occurs.
class ColorCensus {
public:
    struct Entry {
        Pixel color = 0;
        std::uint32_t count = 0;
    };

    // Empty; for at most `limit` colours, 1 to 65535.
    explicit ColorCensus(std::size_t limit);

    // Of all those pixels; nothing when they have more than `limit` colours.
    static std::optional<ColorCensus> take(std::span<const Pixel> colors, std::size_t limit);

    // Counts more pixels of one colour. False when that colour would be one too many.
    bool add(Pixel color, std::size_t count);

    // In the order of their first occurrence.
    const std::vector<Entry>& entries() const { return found; }

    // The number of its entry for each pixel that the census was taken of.
    std::span<const std::uint16_t> entryNumbers() const { return numbers; }

private:
    // Of the entry that is made if need be; nothing when it would be one too many.
    std::optional<std::uint16_t> numberOf(Pixel color);

    std::size_t limit;
    std::vector<Entry> found;
    std::vector<std::uint16_t> numbers;
    // An open hash table of entry numbers plus 1, at most a quarter full.
    std::vector<std::uint16_t> slots;
    int shift = 0;
};

} // namespace clipwren
