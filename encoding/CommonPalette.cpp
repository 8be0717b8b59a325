#include "encoding/CommonPalette.h"

#include "encoding/ColorCensus.h"
#include "encoding/NearestColor.h"
#include "encoding/PaletteQuantizer.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace clipwren {

namespace {

// Enough to know the colours of a change.
constexpr std::size_t mostBlocks = 24;

} // namespace

bool CommonPalette::consider(const Image& previous, const Image& current) {
    const FrameChange change = sampledChangeSince(previous, current, mostBlocks);
    // Frames of more colours bring a table of their own anyway.
    const auto census = ColorCensus::take(change.colors, largestPalette - 1);
    if (!census) return false;
    for (const ColorCensus::Entry& entry : census->entries()) {
        pixels.addExact(entry.color, entry.count);
        frames.addExact(entry.color, 1);
    }
    return true;
}

Palette CommonPalette::choose(std::size_t limit) const {
    std::vector<WeightedColor> colors = pixels.summary();
    if (colors.empty()) return {0};
    // Rare colours serve as many frames as frequent ones.
    for (WeightedColor& color : colors)
        color.weight = std::sqrt(color.weight);
    return mostFramesFirst(quantizeEvenly(colors, limit));
}

Palette CommonPalette::mostFramesFirst(const Palette& palette) const {
    const NearestColor nearest(palette);
    std::vector<float> uses(palette.size());
    for (const WeightedColor& color : frames.summary())
        uses[nearest.find(color.place)] += color.weight;
    std::vector<std::size_t> order(palette.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return uses[a] > uses[b]; });
    Palette result;
    for (const std::size_t entry : order)
        result.push_back(palette[entry]);
    return result;
}

} // namespace clipwren
