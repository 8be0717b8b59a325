#pragma once

#include "encoding/Palette.h"
#include "encoding/PerceptualColor.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace clipwren {

// Finds the palette entry that looks most like a colour.
class NearestColor {
public:
    // 1 to 256 places.
    explicit NearestColor(std::span<const PerceptualColor> places);
    explicit NearestColor(const Palette& palette);

    // The first of the nearest.
    std::uint8_t find(const PerceptualColor& color) const;

    // The same, faster: one of the places is known to be no farther.
    std::uint8_t findWithin(const PerceptualColor& color, float squaredDistance) const;

private:
    // As many places are measured at a time.
    static constexpr std::size_t groupSize = 8;
    static constexpr std::size_t groupCount = largestPalette / groupSize;
    static constexpr int shelfCount = 160;
    // Of a place's number, below its squared distance, which leaves the sign and 23 bits for that.
    static constexpr int numberBits = 8;

    static std::size_t shelfOf(int lightness);
    // The least squared distance of those places, and the number of the first that is so near.
    std::int32_t findInGroups(const PerceptualColor& color, std::size_t begin, std::size_t end) const;

    // The places in the order of their lightness, the lightest again and again to the end.
    std::array<float, largestPalette> lightness;
    std::array<float, largestPalette> first;
    std::array<float, largestPalette> second;
    std::array<std::int32_t, largestPalette> numbers; // as they were given
    // The first place that is so light or lighter.
    std::array<std::uint16_t, shelfCount + 1> shelves;
};

} // namespace clipwren
