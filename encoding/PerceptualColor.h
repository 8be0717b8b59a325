#pragma once

#include "base/Image.h"

#include <span>
#include <vector>

namespace clipwren {

// A place in a colour space where the straight distance is close to how different two colours look. Whole
// numbers kept as floats: lightness within +-640, the others within +-1067, so that squared distances are
// below 2^23 and exact.
struct PerceptualColor {
    float lightness = 0;
    float first = 0;
    float second = 0;
};

// The distance of two colours that can just be told apart side by side is about this.
constexpr float perceptualUnit = 16;

PerceptualColor perceptualColor(Pixel color);

std::vector<PerceptualColor> placesOf(std::span<const Pixel> colors);

inline float squaredDistance(const PerceptualColor& a, const PerceptualColor& b) {
    const float lightness = a.lightness - b.lightness;
    const float first = a.first - b.first;
    const float second = a.second - b.second;
    return lightness * lightness + first * first + second * second;
}

} // namespace clipwren
