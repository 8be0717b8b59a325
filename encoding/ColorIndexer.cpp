#include "encoding/ColorIndexer.h"

#include "encoding/ColorCensus.h"
#include "encoding/ColorHistogram.h"
#include "encoding/NearestColor.h"
#include "encoding/PaletteQuantizer.h"

#include <algorithm>

namespace clipwren {

namespace {

// As many colours are looked at one by one; beyond that near colours are taken together.
constexpr std::size_t censusLimit = 8192;

std::vector<std::uint8_t> exactIndices(std::span<const Pixel> colors, const ColorCensus& census) {
    std::vector<std::uint8_t> indices(colors.size());
    std::transform(colors.begin(), colors.end(), indices.begin(),
                   [&](Pixel color) { return static_cast<std::uint8_t>(census.entryOf(color)); });
    return indices;
}

Palette exactPalette(const ColorCensus& census) {
    Palette palette;
    for (const ColorCensus::Entry& entry : census.entries())
        palette.push_back(entry.color);
    return palette;
}

std::vector<std::uint8_t> nearestIndices(std::span<const Pixel> colors, const ColorCensus& census,
                                         const Palette& palette) {
    const NearestColor nearest(palette);
    std::vector<std::uint8_t> byEntry;
    for (const ColorCensus::Entry& entry : census.entries())
        byEntry.push_back(nearest.find(perceptualColor(entry.color)));
    std::vector<std::uint8_t> indices(colors.size());
    std::transform(colors.begin(), colors.end(), indices.begin(),
                   [&](Pixel color) { return byEntry[census.entryOf(color)]; });
    return indices;
}

std::vector<WeightedColor> weightedColors(const ColorCensus& census) {
    std::vector<WeightedColor> result;
    for (const ColorCensus::Entry& entry : census.entries())
        result.push_back({entry.color, static_cast<float>(entry.count)});
    return result;
}

// Finds entries for colours that agree in their six upper bits only once, except for the palette's own, which
// are always found exactly.
class BinnedNearest {
public:
    explicit BinnedNearest(const Palette& palette)
        : own(*ColorCensus::take(palette, palette.size())),
          nearest(palette),
          byBin(binCount) {}

    std::uint8_t find(Pixel color) {
        if (const auto entry = own.find(color)) return static_cast<std::uint8_t>(*entry);
        std::uint16_t& known = byBin[binOf(color)];
        if (known == unknown) known = static_cast<std::uint16_t>(1 + nearest.find(perceptualColor(color)));
        return static_cast<std::uint8_t>(known - 1);
    }

private:
    static constexpr std::size_t binCount = 1 << 18;
    static constexpr std::uint16_t unknown = 0;
    static std::size_t binOf(Pixel color) {
        return (color >> 6 & 0x3F000) | (color >> 4 & 0xFC0) | (color >> 2 & 0x3F);
    }

    const ColorCensus own;
    const NearestColor nearest;
    std::vector<std::uint16_t> byBin;
};

std::vector<std::uint8_t> nearestIndices(std::span<const Pixel> colors, const Palette& palette) {
    BinnedNearest nearest(palette);
    std::vector<std::uint8_t> indices(colors.size());
    std::transform(colors.begin(), colors.end(), indices.begin(),
                   [&](Pixel color) { return nearest.find(color); });
    return indices;
}

} // namespace

IndexedColors indexColors(std::span<const Pixel> colors, std::size_t limit) {
    IndexedColors result;
    if (const auto census = ColorCensus::take(colors, censusLimit)) {
        if (census->entries().size() <= limit) {
            result.palette = exactPalette(*census);
            result.indices = exactIndices(colors, *census);
        } else {
            result.palette = quantize(weightedColors(*census), limit);
            result.indices = nearestIndices(colors, *census, result.palette);
        }
    } else {
        result.palette = quantize(summarizedColors(colors), limit);
        result.indices = nearestIndices(colors, result.palette);
    }
    return result;
}

} // namespace clipwren
