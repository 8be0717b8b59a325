#include "encoding/CommonPalette.h"

#include "encoding/PaletteQuantizer.h"
#include <cmath>

namespace clipwren {

namespace {

// Enough to know the colours of a change; a frame in full motion shall not outvote many quiet ones.
constexpr std::size_t mostBlocks = 24;
constexpr std::size_t quietPixels = 4096;

} // namespace

void CommonPalette::consider(const Image& previous, const Image& current) {
    const FrameChange change = sampledChangeSince(previous, current, mostBlocks);
    if (change.colors.size() > quietPixels) {
        histogram.addNeighbors(change.colors);
        return;
    }
    for (const Pixel color : change.colors)
        histogram.addExact(color, 1);
}

Palette CommonPalette::choose(std::size_t limit) const {
    std::vector<WeightedColor> colors = histogram.summary();
    // Rare colours serve as many frames as frequent ones.
    for (WeightedColor& color : colors)
        color.weight = std::sqrt(color.weight);
    return colors.empty() ? Palette{0} : quantize(colors, limit);
}

} // namespace clipwren
