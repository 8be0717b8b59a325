#pragma once

#include "encoding/NearestColor.h"
#include "encoding/Palette.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace clipwren {

// Finds the palette entries that look most like the colours of very many pixels. Within a small cube of
// colours few entries can be the nearest, and how colours look is as good as linear there. All colours of a
// cube get their entries when the first of them comes: first those that can be the nearest in a cube of eight
// colours' side are picked out, from them those for each of the eight cubes in it. Colours that lie in ever
// more cubes, as those of noise do, are looked for one by one in the end, so that the memory stays bounded.
// For one thread.
class CellwiseNearest {
public:
    // 1 to 256 entries; the palette outlives this object.
    explicit CellwiseNearest(const Palette& palette);

    // The first of the nearest; one of the palette's own colours is found exactly.
    std::uint8_t find(Pixel color) {
        const std::uint32_t cell = cells[outerCells[outerCellOf(color)] + cellWithin(color)];
        return cell == unknown ? findInUnknown(color) : nearest[cell + placeWithin(color)];
    }

private:
    static constexpr std::size_t placeCount = 64; // colours of a cell
    static constexpr std::size_t outerCellCount = std::size_t{1} << 15;
    static constexpr std::size_t cellsInOuter = 8;
    static constexpr std::uint32_t unknown = 0;

    static std::size_t outerCellOf(Pixel color) {
        return (color >> 9 & 0x7C00) | (color >> 6 & 0x03E0) | (color >> 3 & 0x001F);
    }
    static std::size_t cellWithin(Pixel color) {
        return (color >> 16 & 4) | (color >> 9 & 2) | (color >> 2 & 1);
    }
    static std::size_t placeWithin(Pixel color) {
        return (color >> 12 & 0x30) | (color >> 6 & 0x0C) | (color & 0x03);
    }

    // A palette entry that may be the nearest in an outer cell.
    struct Candidate {
        int offset = 0; // the squared distance from the cell's middle
        std::array<int, 3> slope{};
        std::uint8_t entry = 0;
    };

    std::uint8_t findInUnknown(Pixel color);
    std::uint32_t exploreOuter(Pixel color);
    std::uint32_t explore(Pixel color, std::uint32_t outer);

    const Palette& palette;
    // Where the entries lie.
    std::array<int, largestPalette> lightness{};
    std::array<int, largestPalette> first{};
    std::array<int, largestPalette> second{};
    // Each with the number of its first cell, each cell with that of its first place. The first cells and
    // places are nobody's: an outer cell that is not known has cells that are not known.
    std::vector<std::uint32_t> outerCells = std::vector<std::uint32_t>(outerCellCount);
    std::vector<std::uint32_t> cells = std::vector<std::uint32_t>(cellsInOuter);
    std::vector<std::uint8_t> nearest = std::vector<std::uint8_t>(placeCount);
    // Of the outer cells that are known, in their order, and how many there are after each.
    std::vector<Candidate> candidates;
    std::vector<std::size_t> candidateCounts{0};
    NearestColor oneByOne;
};

} // namespace clipwren
