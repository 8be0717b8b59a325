#include "encoding/ColorHistogram.h"

namespace clipwren {

namespace {

// Photographs hardly have as many equal pixels side by side.
constexpr std::size_t flatRow = 4;

} // namespace

ColorHistogram::ColorHistogram(int bits)
    : redShift(24 - 3 * bits),
      greenShift(16 - 2 * bits),
      blueShift(8 - bits),
      redMask(((1u << bits) - 1) << (2 * bits)),
      greenMask(((1u << bits) - 1) << bits),
      blueMask((1u << bits) - 1),
      numbers(std::size_t{1} << (3 * bits)) {}

void ColorHistogram::addNeighbors(std::span<const Pixel> colors) {
    for (std::size_t i = 0; i < colors.size();) {
        const std::size_t begin = i;
        const Pixel color = colors[i];
        while (i < colors.size() && colors[i] == color)
            ++i;
        if (i - begin >= flatRow)
            addExact(color, i - begin);
        else
            addNear(color, i - begin);
    }
}

void ColorHistogram::addExact(Pixel color, std::size_t times) {
    if (!exact.add(color, times)) addNear(color, times);
}

std::vector<WeightedColor> ColorHistogram::summary() const {
    std::vector<WeightedColor> result;
    result.reserve(exact.entries().size() + bins.size());
    for (const ColorCensus::Entry& entry : exact.entries())
        result.emplace_back(entry.color, static_cast<float>(entry.count));
    for (const Bin& bin : bins)
        result.emplace_back(bin.mean(), static_cast<float>(bin.count));
    return result;
}

std::uint32_t ColorHistogram::addBin() {
    bins.emplace_back();
    return static_cast<std::uint32_t>(bins.size());
}

void ColorHistogram::Bin::add(Pixel color, std::uint32_t times) {
    count += times;
    for (int i = 0; i < 3; ++i)
        sums[static_cast<std::size_t>(i)] += times * ((color >> (8 * i)) & 0xFF);
}

Pixel ColorHistogram::Bin::mean() const {
    Pixel mean = 0;
    for (int i = 0; i < 3; ++i)
        mean |= (sums[static_cast<std::size_t>(i)] + count / 2) / count << (8 * i);
    return mean;
}

} // namespace clipwren
