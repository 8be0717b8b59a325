#include "encoding/ColorHistogram.h"

namespace clipwren {

namespace {

// Photographs hardly have as many equal pixels side by side.
constexpr std::size_t flatRow = 4;

} // namespace

ColorHistogram::ColorHistogram(int bits) : bits(bits), numbers(std::size_t{1} << (3 * bits)) {}

void ColorHistogram::addNeighbors(std::span<const Pixel> colors) {
    for (std::size_t i = 0; i < colors.size();) {
        const std::size_t begin = i;
        const Pixel color = colors[i];
        while (i < colors.size() && colors[i] == color)
            ++i;
        if (i - begin >= flatRow)
            addExact(color, i - begin);
        else
            binOf(color).add(color, static_cast<std::uint32_t>(i - begin));
    }
}

void ColorHistogram::addExact(Pixel color, std::size_t times) {
    if (!exact.add(color, times)) binOf(color).add(color, static_cast<std::uint32_t>(times));
}

std::vector<WeightedColor> ColorHistogram::summary() const {
    std::vector<WeightedColor> result;
    for (const ColorCensus::Entry& entry : exact.entries())
        result.push_back({entry.color, static_cast<float>(entry.count)});
    for (const Bin& bin : bins)
        result.push_back({bin.mean(), static_cast<float>(bin.count)});
    return result;
}

ColorHistogram::Bin& ColorHistogram::binOf(Pixel color) {
    const Pixel mask = (1u << bits) - 1;
    std::size_t place = 0;
    for (int shift = 24; shift > 0; shift -= 8)
        place = place << bits | (color >> (shift - bits) & mask);
    std::uint32_t& number = numbers[place];
    if (number == 0) {
        bins.emplace_back();
        number = static_cast<std::uint32_t>(bins.size());
    }
    return bins[number - 1];
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
