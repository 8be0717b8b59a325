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

private:
    void add(const PerceptualColor& place);

    std::size_t count = 0;
    std::array<float, largestPalette> lightness{};
    std::array<float, largestPalette> first{};
    std::array<float, largestPalette> second{};
};

} // namespace clipwren
