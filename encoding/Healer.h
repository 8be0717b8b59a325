#pragma once

#include "base/Image.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace clipwren {

// Decides which parts of the shown picture are drawn once more although nothing changed there: those that had
// to do with few colours and have stood still since. Little by little they come nearer to what was recorded,
// so slowly that nobody sees them boil.
class Healer {
public:
    explicit Healer(PixelSize size);

    // Takes note of the next frame's changes and returns the blocks to draw again with it: rectangles of
    // whole blocks in which it shows the same as the frame before.
    std::vector<PixelRect> choose(const Image& previous, const Image& current);

    // A pixel of the block at (x, y) is now so far from what was recorded.
    void addMisfit(int x, int y, std::uint32_t misfit) { blocks[blockAt(x, y)].misfit += misfit; }

    // All of the frame that was chosen for first is drawn, in so many steps of brightness at pixels that
    // stood still.
    void drawn(std::uint32_t brightnessSteps);

private:
    struct Block {
        std::uint32_t misfit = 0;
        std::uint32_t changedIn = 0; // frame
        std::uint8_t attempts = 0;   // since then
    };
    std::size_t blockAt(int x, int y) const {
        return static_cast<std::size_t>(y / Image::blockHeight) * static_cast<std::size_t>(columns) +
               static_cast<std::size_t>(x / Image::blockWidth);
    }
    bool isDue(const Block& block) const;
    PixelRect rectOf(std::size_t block) const;

    PixelSize size;
    int columns;
    std::uint32_t frame = 0;
    double patience = 0; // steps of brightness that nobody minds by now
    std::deque<double>
        expected; // steps of the frames that are chosen for and not yet drawn: taken off already
    std::vector<Block> blocks;
};

} // namespace clipwren
