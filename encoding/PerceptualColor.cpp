#include "encoding/PerceptualColor.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace clipwren {

namespace {

// The cube root of CIELAB, tabulated: conversion is on the road of every colour of a photograph.
constexpr int rootSteps = 4096;

struct Tables {
    std::array<float, 256> linear;
    std::array<float, rootSteps + 2> root;

    Tables() {
        for (int i = 0; i < 256; ++i) {
            const double value = i / 255.0;
            linear[static_cast<std::size_t>(i)] =
                static_cast<float>(value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4));
        }
        for (int i = 0; i < rootSteps + 2; ++i) {
            const double t = static_cast<double>(i) / rootSteps;
            root[static_cast<std::size_t>(i)] =
                static_cast<float>(t > 216.0 / 24389 ? std::cbrt(t) : 7.787037 * t + 16.0 / 116);
        }
    }

    float rootOf(float t) const {
        const float place = std::clamp(t, 0.0f, 1.0f) * rootSteps;
        const auto step = static_cast<std::size_t>(place);
        return root[step] + (root[step + 1] - root[step]) * (place - static_cast<float>(step));
    }
};

const Tables& tables() {
    static const Tables instance;
    return instance;
}

// Unlike the library's, without a call; and without a branch, which nobody could foresee.
float rounded(float value) {
    return static_cast<float>(static_cast<int>(value + std::copysign(0.5f, value)));
}

} // namespace

PerceptualColor perceptualColor(Pixel color) {
    const Tables& table = tables();
    const float red = table.linear[(color >> 16) & 0xFF];
    const float green = table.linear[(color >> 8) & 0xFF];
    const float blue = table.linear[color & 0xFF];
    // CIELAB of an sRGB colour, white D65.
    const float x = table.rootOf(0.4339531f * red + 0.3762194f * green + 0.1898275f * blue);
    const float y = table.rootOf(0.2126729f * red + 0.7151522f * green + 0.0721750f * blue);
    const float z = table.rootOf(0.0177578f * red + 0.1094766f * green + 0.8727656f * blue);
    const float lightness = 116 * y - 16;
    const float a = 500 * (x - y);
    const float b = 200 * (y - z);
    // Strong colours are told apart less well than greys, very dark and bright ones less well than middle
    // ones.
    const float chroma = std::sqrt(a * a + b * b);
    const float chromaScale = 1 / (1 + 0.015f * chroma);
    const float fromMiddle = lightness - 50;
    const float lightnessScale = 1 / (1 + 0.005f * std::fabs(fromMiddle));
    return {rounded(perceptualUnit * fromMiddle * lightnessScale), rounded(perceptualUnit * a * chromaScale),
            rounded(perceptualUnit * b * chromaScale)};
}

std::vector<PerceptualColor> placesOf(std::span<const Pixel> colors) {
    std::vector<PerceptualColor> places(colors.size());
    std::transform(colors.begin(), colors.end(), places.begin(), perceptualColor);
    return places;
}

} // namespace clipwren
