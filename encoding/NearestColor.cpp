#include "encoding/NearestColor.h"

#include "encoding/WideVectors.h"

#include <algorithm>
#include <limits>

namespace clipwren {

NearestColor::NearestColor(std::span<const PerceptualColor> places) {
    for (const PerceptualColor& place : places)
        add(place);
}

NearestColor::NearestColor(const Palette& palette) {
    for (const Pixel color : palette)
        add(perceptualColor(color));
}

void NearestColor::add(const PerceptualColor& place) {
    lightness[count] = place.lightness;
    first[count] = place.first;
    second[count] = place.second;
    ++count;
}

// The hottest loop of the encoder.
CLIPWREN_WIDE_VECTORS
std::uint8_t NearestColor::find(const PerceptualColor& color) const {
    // Distance and index in one number, so that the search is a plain minimum, which compilers vectorise.
    std::int32_t best = std::numeric_limits<std::int32_t>::max();
    for (std::size_t i = 0; i < count; ++i) {
        const float x = lightness[i] - color.lightness;
        const float y = first[i] - color.first;
        const float z = second[i] - color.second;
        const auto distance = static_cast<std::int32_t>(x * x + y * y + z * z);
        best = std::min(best, distance << 8 | static_cast<std::int32_t>(i));
    }
    return static_cast<std::uint8_t>(best & 0xFF);
}

} // namespace clipwren
