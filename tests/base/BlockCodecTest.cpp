#include "base/BlockCodec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <vector>

namespace clipwren {
namespace {

using Block = std::vector<Pixel>;

constexpr unsigned pixelCount = Image::blockWidth * Image::blockHeight;

// Unpacked it must be what it was; returns how many bytes it was in between.
std::size_t packedSize(const Block& block) {
    std::vector<std::uint8_t> packed(largestPackedBlock + 8, 0xA5);
    const std::size_t size = packBlock(block.data(), packed.data());
    EXPECT_LE(size, largestPackedBlock);
    EXPECT_EQ(std::count(packed.begin() + largestPackedBlock, packed.end(), 0xA5), 8) << "written beyond";
    Block back(pixelCount, 0xDEADBEEF);
    unpackBlock(packed.data(), back.data());
    EXPECT_EQ(back, block);
    return size;
}

Block made(const std::function<Pixel(unsigned x, unsigned y)>& pixel) {
    Block block(pixelCount);
    for (unsigned i = 0; i < pixelCount; ++i)
        block[i] = pixel(i % Image::blockWidth, i / Image::blockWidth);
    return block;
}

TEST(BlockCodec, MakesAFlatBlockTiny) {
    for (const Pixel color : {0u, 0xFF000000u, 0xFFFFFFFFu, 0x80123456u})
        EXPECT_LT(packedSize(Block(pixelCount, color)), 20u);
}

TEST(BlockCodec, KeepsEveryCountOfColours) {
    std::mt19937 random(1);
    for (unsigned count = 1; count <= 140; ++count) {
        Block colors;
        for (unsigned i = 0; i < count; ++i)
            colors.push_back(static_cast<Pixel>(random()));
        const std::size_t size =
            packedSize(made([&](unsigned, unsigned) { return colors[random() % count]; }));
        if (count <= 16) {
            EXPECT_LT(size, 600u) << count;
        }
        // And in runs, which leaves groups that repeat the row above.
        packedSize(made([&](unsigned x, unsigned y) { return colors[(x / 9 + y / 5) % count]; }));
        // And with more of them from row to row.
        packedSize(made([&](unsigned, unsigned y) { return colors[random() % ((count - 1) * y / 15 + 1)]; }));
    }
}

// Boxes that overlap, made smaller: flat areas, and at each border a colour of its own.
TEST(BlockCodec, MakesManyColoursSmallWhereTheyHaveNoOrder) {
    std::mt19937 random(4);
    Block large(pixelCount * 4, 0xFF203040);
    for (int box = 0; box < 25; ++box) {
        const unsigned left = random() % 128, top = random() % 32, color = static_cast<Pixel>(random());
        const unsigned right = std::min(left + 7 + static_cast<unsigned>(random() % 40), 128u);
        const unsigned bottom = std::min(top + 7 + static_cast<unsigned>(random() % 20), 32u);
        for (unsigned y = top; y < bottom; ++y)
            for (unsigned x = left; x < right; ++x)
                large[y * 128 + x] = color | 0xFF000000;
    }
    const Block block = made([&](unsigned x, unsigned y) {
        Pixel mean = 0;
        for (unsigned shift = 0; shift < 32; shift += 8) {
            unsigned sum = 0;
            for (const unsigned i : {0u, 1u, 128u, 129u})
                sum += large[y * 256 + x * 2 + i] >> shift & 0xFF;
            mean |= sum / 4 << shift;
        }
        return mean;
    });
    Block colors = block;
    std::ranges::sort(colors);
    ASSERT_GT(std::ranges::unique(colors).begin() - colors.begin(), 40);
    EXPECT_LT(packedSize(block), 1100u);
}

TEST(BlockCodec, PredictsGradients) {
    EXPECT_LT(packedSize(made([](unsigned x, unsigned y) { return 0xFF000000 | (x + y) * 0x010101; })), 700u);
    EXPECT_LT(packedSize(made([](unsigned x, unsigned y) {
                  return 0xFF000000 | (x * 3 & 0xFF) << 16 | (y * 7 & 0xFF) << 8 | ((x + y) & 0xFF);
              })),
              1400u);
}

TEST(BlockCodec, KeepsNoiseOfEveryStrength) {
    std::mt19937 random(2);
    for (unsigned bits = 0; bits <= 8; ++bits)
        for (const Pixel alpha : {0u, 0x7F000000u, 0xFF000000u})
            packedSize(made([&](unsigned x, unsigned) {
                Pixel pixel = alpha;
                for (unsigned channel = 0; channel < 3; ++channel)
                    pixel |= ((x * 2 + static_cast<unsigned>(random() >> (32 - bits))) & 0xFF) << channel * 8;
                return pixel;
            }));
    // Nothing can be made of this, alpha included.
    EXPECT_GT(packedSize(made([&](unsigned, unsigned) { return static_cast<Pixel>(random()); })), 4096u);
    // An opaque picture loses at least its alpha.
    EXPECT_LT(packedSize(made([&](unsigned, unsigned) { return static_cast<Pixel>(random()) | 0xFF000000; })),
              3200u);
}

TEST(BlockCodec, KeepsBlocksThatAPictureCutsOff) {
    std::mt19937 random(3);
    for (unsigned width = 1; width < 64; width += 7)
        for (unsigned height = 1; height < 16; height += 4)
            packedSize(made([&](unsigned x, unsigned y) {
                return x < width && y < height ? static_cast<Pixel>(random()) | 0xFF000000 : 0;
            }));
}

TEST(BlockCodec, KeepsTheExtremes) {
    // The largest steps, one pixel after another and row after row.
    packedSize(made([](unsigned x, unsigned y) { return (x + y) % 2 ? 0xFFFFFFFF : x * 0x01010101; }));
    packedSize(made([](unsigned x, unsigned y) { return (x ^ y) * 0x80808080 + x; }));
    packedSize(made([](unsigned x, unsigned y) { return x << 24 | y << 16 | x * y; }));
}

} // namespace
} // namespace clipwren
