#pragma once

#include "base/Image.h"

#include <cstddef>
#include <span>
#include <vector>

namespace clipwren {

// Neighbouring pixels of one row, all in one block.
struct PixelRun {
    int x = 0;
    int y = 0;
    int length = 0;
    friend bool operator==(const PixelRun&, const PixelRun&) = default;
};

// What has another colour than in the picture before.
struct FrameChange {
    PixelRect rect;              // the smallest that holds all of it; empty when nothing changed
    std::vector<PixelRun> runs;  // every changed pixel once, block by block
    std::vector<Pixel> colors;   // the new colours, opaque (0x00RRGGBB), in the order of the runs
    std::size_t healingRuns = 0; // so many of the last runs did not change: they are to be drawn again

    bool isEmpty() const { return runs.empty(); }

    // Of a picture of so many.
    bool isMostOf(std::size_t pixels) const { return 2 * colors.size() > pixels; }

    // Takes in some of the picture's blocks, although they did not change.
    void addHealing(const Image& image, std::span<const PixelRect> blocks);
};

// All pixels of a picture.
FrameChange wholeFrame(const Image& image);

// Compares pictures of the same size; the cost follows the blocks that they do not share.
FrameChange changeSince(const Image& previous, const Image& current);

// The same in at most `mostBlocks` of those blocks, one or more, evenly spread.
FrameChange sampledChangeSince(const Image& previous, const Image& current, std::size_t mostBlocks);

} // namespace clipwren
