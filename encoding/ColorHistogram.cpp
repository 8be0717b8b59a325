#include "encoding/ColorHistogram.h"

#include "encoding/ColorCensus.h"

#include <array>
#include <cstdint>

namespace clipwren {

namespace {

// Photographs hardly have as many equal pixels side by side.
constexpr std::size_t flatRow = 4;
constexpr std::size_t mostFlatColors = 4096;

struct Bin {
    std::uint32_t count = 0;
    std::array<std::uint32_t, 3> sums{}; // blue, green, red

    void add(Pixel color, std::uint32_t times) {
        count += times;
        for (int i = 0; i < 3; ++i)
            sums[static_cast<std::size_t>(i)] += times * ((color >> (8 * i)) & 0xFF);
    }

    Pixel mean() const {
        Pixel mean = 0;
        for (int i = 0; i < 3; ++i)
            mean |= (sums[static_cast<std::size_t>(i)] + count / 2) / count << (8 * i);
        return mean;
    }
};

class Histogram {
public:
    void add(Pixel color, std::size_t times) {
        if (times >= flatRow && flat.add(color, times)) return;
        bins[binOf(color)].add(color, static_cast<std::uint32_t>(times));
    }

    std::vector<WeightedColor> summary() const {
        std::vector<WeightedColor> result;
        for (const ColorCensus::Entry& entry : flat.entries())
            result.push_back({entry.color, static_cast<float>(entry.count)});
        for (const Bin& bin : bins)
            if (bin.count > 0) result.push_back({bin.mean(), static_cast<float>(bin.count)});
        return result;
    }

private:
    static std::size_t binOf(Pixel color) {
        return (color >> 9 & 0x7C00) | (color >> 6 & 0x03E0) | (color >> 3 & 0x001F);
    }

    ColorCensus flat{mostFlatColors};
    std::vector<Bin> bins = std::vector<Bin>(std::size_t{1} << 15);
};

} // namespace

std::vector<WeightedColor> summarizedColors(std::span<const Pixel> colors) {
    Histogram histogram;
    for (std::size_t i = 0; i < colors.size();) {
        const std::size_t begin = i;
        const Pixel color = colors[i];
        while (i < colors.size() && colors[i] == color)
            ++i;
        histogram.add(color, i - begin);
    }
    return histogram.summary();
}

} // namespace clipwren
