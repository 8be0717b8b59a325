#include "base/BlockCodec.h"

#include "base/BitGroups.h"
#include "base/BlockPlanes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace clipwren {

namespace {

using bitgroups::getBits;
using bitgroups::groupSize;
using bitgroups::putBits;

constexpr int width = Image::blockWidth;
constexpr int height = Image::blockHeight;
constexpr int pixelCount = width * height;
constexpr int groupsInRow = width / groupSize;
constexpr int groupCount = pixelCount / groupSize;
static_assert(groupCount == 64, "a bit of one word for each group");

// A packed block begins with its kind: how many colours its palette has, or that it has none. Without a
// palette there are planes of one channel each; alpha has none where all is opaque.
constexpr int largestColorCount = 128;
constexpr std::uint8_t opaquePlanes = 0;
constexpr std::uint8_t fourPlanes = largestColorCount + 1;
static_assert(largestPackedBlock == 1 + height * 4 * (2 + width));

// Whether a group equals the one above it, or, in the first row, is of the first pixel's colour. Two pixels
// at a time, for the sake of vector code.
bool isRepeated(const Pixel* pixels, int group) {
    const Pixel* now = pixels + group * groupSize;
    const auto pairAt = [](const Pixel* from) {
        std::uint64_t pair;
        std::memcpy(&pair, from, sizeof pair);
        return pair;
    };
    std::uint64_t difference = 0;
    if (group < groupsInRow) {
        const std::uint64_t first = pixels[0] | std::uint64_t{pixels[0]} << 32;
        for (int i = 0; i < groupSize; i += 2)
            difference |= pairAt(now + i) ^ first;
    } else {
        for (int i = 0; i < groupSize; i += 2)
            difference |= pairAt(now + i) ^ pairAt(now + i - width);
    }
    return difference == 0;
}

std::uint64_t repeatedGroups(const Pixel* pixels) {
    std::uint64_t repeated = 0;
    for (int group = 0; group < groupCount; ++group)
        repeated |= std::uint64_t{isRepeated(pixels, group)} << group;
    return repeated;
}

int indexBits(int colorCount) { return std::bit_width(static_cast<unsigned>(colorCount - 1)); }

int packedSize(int colorCount, std::uint64_t repeated) {
    const int groups = groupCount - std::popcount(repeated);
    return 9 + colorCount * static_cast<int>(sizeof(Pixel)) + groups * 2 * indexBits(colorCount);
}

struct Colors {
    std::array<Pixel, largestColorCount> palette;
    // Of the groups that are not repeated, one after another; the last one may be written beyond its end.
    std::array<std::uint8_t, pixelCount + groupSize> indices;
    std::uint64_t repeated = 0; // a bit for each group
    int count = 0;              // 0: too many
};

// So many are worth a palette always.
constexpr int fewColors = 16;

// More are where they stand beside each other without order, as in drawn or written things made smaller, and
// not where one leads to the next. `group` is where the few were exceeded: in a photograph that is the first
// row.
bool areWorthMore(int group, const Pixel* pixels) {
    if (group < groupsInRow) return false;
    return packedSize(64, repeatedGroups(pixels)) * 5 / 4 < estimatedPlanesSize(pixels);
}

// A bit for each pixel of the group that begins a run of equal ones.
unsigned runsIn(const Pixel* group) {
    std::array<std::uint8_t, groupSize> begins{1};
    for (std::size_t i = 1; i < groupSize; ++i)
        begins[i] = group[i] != group[i - 1];
    return bitgroups::gatheredBits(begins.data(), 0) |
           static_cast<unsigned>(bitgroups::gatheredBits(begins.data() + 8, 0)) << 8;
}

void findColors(const Pixel* pixels, Colors& colors) {
    // A slot for each colour, found by its hash. Nothing in it means the first colour, whose pixels are
    // found in any slot that no other colour has taken.
    constexpr unsigned slotCount = 1024;
    const auto slotOf = [](Pixel color) { return color * 2654435761u >> 22; };
    std::array<std::uint8_t, slotCount> slots{};
    colors.palette[0] = pixels[0];
    colors.count = 1;
    int most = fewColors;
    std::uint8_t* out = colors.indices.data();
    for (int number = 0; number < groupCount; ++number) {
        if (isRepeated(pixels, number)) {
            colors.repeated |= std::uint64_t{1} << number;
            continue;
        }
        const Pixel* group = pixels + number * groupSize;
        for (unsigned starts = runsIn(group); starts != 0; starts &= starts - 1) {
            const int start = std::countr_zero(starts);
            const Pixel color = group[start];
            unsigned slot = slotOf(color);
            while (colors.palette[slots[slot]] != color) {
                if (slots[slot] != 0) {
                    slot = (slot + 1) % slotCount;
                    continue;
                }
                if (colors.count == most) {
                    if (most == fewColors && areWorthMore(number, pixels)) {
                        most = largestColorCount;
                    } else {
                        colors.count = 0;
                        return;
                    }
                }
                slots[slot] = static_cast<std::uint8_t>(colors.count);
                colors.palette[static_cast<std::size_t>(colors.count++)] = color;
            }
            // As many as a run can have: what is too much the next one overwrites.
            std::memset(out + start, slots[slot], groupSize);
        }
        out += groupSize;
    }
}

template <int bits>
std::uint8_t* putIndices(const Colors& colors, std::uint8_t* to) {
    const std::uint8_t* indices = colors.indices.data();
    for (int left = groupCount - std::popcount(colors.repeated); left > 0; --left, indices += groupSize)
        to = putBits<bits>(indices, to);
    return to;
}

std::uint8_t* packColors(const Colors& colors, std::uint8_t* to) {
    *to++ = static_cast<std::uint8_t>(colors.count);
    const auto paletteSize = static_cast<std::size_t>(colors.count) * sizeof(Pixel);
    std::memcpy(to, colors.palette.data(), paletteSize);
    to += paletteSize;
    std::memcpy(to, &colors.repeated, sizeof colors.repeated);
    to += sizeof colors.repeated;
    switch (indexBits(colors.count)) {
    case 0: return to;
    case 1: return putIndices<1>(colors, to);
    case 2: return putIndices<2>(colors, to);
    case 3: return putIndices<3>(colors, to);
    case 4: return putIndices<4>(colors, to);
    case 5: return putIndices<5>(colors, to);
    case 6: return putIndices<6>(colors, to);
    default: return putIndices<7>(colors, to);
    }
}

template <int bits>
void getIndices(std::uint64_t repeated, const Pixel* palette, const std::uint8_t* from, Pixel* pixels) {
    for (int group = 0; group < groupCount; ++group, pixels += groupSize) {
        if ((repeated >> group & 1) == 0) {
            std::array<std::uint8_t, groupSize> indices;
            from = getBits<bits>(from, indices.data());
            for (int i = 0; i < groupSize; ++i)
                pixels[i] = palette[indices[static_cast<std::size_t>(i)]];
        } else if (group < groupsInRow) {
            std::fill_n(pixels, groupSize, palette[0]);
        } else {
            std::copy_n(pixels - width, groupSize, pixels);
        }
    }
}

void unpackColors(int count, const std::uint8_t* from, Pixel* pixels) {
    std::array<Pixel, largestColorCount> palette;
    const auto paletteSize = static_cast<std::size_t>(count) * sizeof(Pixel);
    std::memcpy(palette.data(), from, paletteSize);
    from += paletteSize;
    std::uint64_t repeated;
    std::memcpy(&repeated, from, sizeof repeated);
    from += sizeof repeated;
    switch (indexBits(count)) {
    case 0: return getIndices<0>(repeated, palette.data(), from, pixels);
    case 1: return getIndices<1>(repeated, palette.data(), from, pixels);
    case 2: return getIndices<2>(repeated, palette.data(), from, pixels);
    case 3: return getIndices<3>(repeated, palette.data(), from, pixels);
    case 4: return getIndices<4>(repeated, palette.data(), from, pixels);
    case 5: return getIndices<5>(repeated, palette.data(), from, pixels);
    case 6: return getIndices<6>(repeated, palette.data(), from, pixels);
    default: return getIndices<7>(repeated, palette.data(), from, pixels);
    }
}

bool isOpaque(const Pixel* pixels) {
    Pixel common = 0xFFFFFFFF;
    for (int i = 0; i < pixelCount; ++i)
        common &= pixels[i];
    return common >> 24 == 0xFF;
}

} // namespace

std::size_t packBlock(const Pixel* pixels, std::uint8_t* packed) {
    Colors colors;
    findColors(pixels, colors);
    if (colors.count > 0) return static_cast<std::size_t>(packColors(colors, packed) - packed);
    const bool opaque = isOpaque(pixels);
    packed[0] = opaque ? opaquePlanes : fourPlanes;
    return static_cast<std::size_t>(packPlanes(pixels, opaque, packed + 1) - packed);
}

void unpackBlock(const std::uint8_t* packed, Pixel* pixels) {
    const int kind = packed[0];
    if (kind == opaquePlanes || kind == fourPlanes)
        unpackPlanes(packed + 1, kind == opaquePlanes, pixels);
    else
        unpackColors(kind, packed + 1, pixels);
}

} // namespace clipwren
