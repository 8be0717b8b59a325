#include "encoding/ColorIndexer.h"

#include "encoding/PerceptualColor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <set>

namespace clipwren {
namespace {

std::vector<Pixel> randomColors(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<Pixel> colors(count);
    for (Pixel& color : colors)
        color = random() & 0xFFFFFF;
    return colors;
}

double meanDistance(const std::vector<Pixel>& colors, const IndexedColors& indexed) {
    double sum = 0;
    for (std::size_t i = 0; i < colors.size(); ++i)
        sum += std::sqrt(squaredDistance(perceptualColor(colors[i]),
                                         perceptualColor(indexed.palette[indexed.indices[i]])));
    return sum / static_cast<double>(colors.size()) / perceptualUnit;
}

// With a shared palette that serves for nothing.
IndexedColors indexColors(const std::vector<Pixel>& colors, std::size_t limit) {
    return ColorIndexer({0, 0xFF00FF}).index(colors, limit);
}

void expectSound(const std::vector<Pixel>& colors, const IndexedColors& indexed, std::size_t limit) {
    ASSERT_EQ(indexed.indices.size(), colors.size());
    ASSERT_GE(indexed.palette.size(), 1u);
    ASSERT_LE(indexed.palette.size(), limit);
    const std::set<Pixel> distinct(indexed.palette.begin(), indexed.palette.end());
    EXPECT_EQ(distinct.size(), indexed.palette.size());
    for (const std::uint8_t index : indexed.indices)
        ASSERT_LT(index, indexed.palette.size());
}

TEST(ColorIndexer, FewColorsStayExact) {
    for (const std::size_t count : {1u, 2u, 3u, 255u}) {
        std::vector<Pixel> colors = randomColors(count, 1);
        for (int i = 0; i < 3; ++i)
            colors.insert(colors.end(), colors.begin(), colors.end());
        const IndexedColors indexed = indexColors(colors, 255);
        expectSound(colors, indexed, 255);
        for (std::size_t i = 0; i < colors.size(); ++i)
            EXPECT_EQ(indexed.palette[indexed.indices[i]], colors[i]);
    }
}

TEST(ColorIndexer, OneColorTooManyCostsLittle) {
    const std::vector<Pixel> colors = randomColors(256, 2);
    const IndexedColors indexed = indexColors(colors, 255);
    expectSound(colors, indexed, 255);
    EXPECT_LT(meanDistance(colors, indexed), 0.5);
}

TEST(ColorIndexer, EqualColorsGetEqualEntries) {
    std::vector<Pixel> colors = randomColors(20'000, 3);
    colors.insert(colors.end(), colors.begin(), colors.begin() + 20'000);
    const IndexedColors indexed = indexColors(colors, 255);
    expectSound(colors, indexed, 255);
    EXPECT_TRUE(std::equal(indexed.indices.begin(), indexed.indices.begin() + 20'000,
                           indexed.indices.begin() + 20'000));
}

// An interface: a few colours on most pixels, among them near ones, and a photograph.
TEST(ColorIndexer, FlatColorsStayExactBesideAPhotograph) {
    const std::vector<Pixel> flat{0xFFFFFF, 0xFAFAFA, 0xF8F8F8, 0x202124, 0x1A73E8, 0x000000};
    for (const std::size_t photograph : {3'000u, 50'000u}) {
        std::vector<Pixel> colors = randomColors(photograph, 4);
        for (const Pixel color : flat)
            colors.insert(colors.end(), 20'000, color);
        const IndexedColors indexed = indexColors(colors, 255);
        expectSound(colors, indexed, 255);
        for (std::size_t i = photograph; i < colors.size(); i += 20'000)
            EXPECT_EQ(indexed.palette[indexed.indices[i]], colors[i]) << std::hex << colors[i];
    }
}

TEST(ColorIndexer, AGreyRampKeepsItsGrades) {
    std::vector<Pixel> colors;
    for (Pixel grey = 0; grey < 256; ++grey)
        colors.insert(colors.end(), 10, grey * 0x010101);
    const IndexedColors indexed = indexColors(colors, 64);
    expectSound(colors, indexed, 64);
    EXPECT_LT(meanDistance(colors, indexed), 0.8);
}

TEST(ColorIndexer, TheSharedPaletteServesWhenItHasTheColors) {
    const Palette shared{0, 0xFFFFFF, 0x202124, 0x1A73E8};
    const std::vector<Pixel> colors{0x1A73E8, 0xFFFFFF, 0xFFFFFF, 0x202124};
    const IndexedColors indexed = ColorIndexer(shared).index(colors, 255);
    EXPECT_TRUE(indexed.palette.empty());
    EXPECT_EQ(indexed.indices, (std::vector<std::uint8_t>{3, 1, 1, 2}));
}

TEST(ColorIndexer, TheFirstSharedEntryIsNoColor) {
    const std::vector<Pixel> black(10, 0x000000);
    const IndexedColors indexed = ColorIndexer({0, 0xFFFFFF}).index(black, 255);
    EXPECT_EQ(indexed.palette, (Palette{0x000000}));
}

TEST(ColorIndexer, TheSharedPaletteServesForFewPixelsNearItThatFitNoTable) {
    constexpr std::size_t limit = 30;
    Palette shared{0};
    std::vector<Pixel> near;
    for (Pixel i = 0; i < 40; ++i) {
        shared.push_back(i * 0x060606);
        near.push_back(i * 0x060606 + 0x010101);
    }
    const ColorIndexer indexer(shared);
    EXPECT_TRUE(indexer.index(near, limit).palette.empty());
    // One pixel of quite another colour is worth a table.
    near.push_back(0xFF0000);
    EXPECT_FALSE(indexer.index(near, limit).palette.empty());
    near.pop_back();
    // And so are small differences of many pixels.
    near.insert(near.end(), 10'000, near.back());
    EXPECT_FALSE(indexer.index(near, limit).palette.empty());
}

TEST(ColorIndexer, WhatFitsATableIsExactWhereAnybodyWouldSeeIt) {
    const ColorIndexer indexer({0, 0xFFFFFF, 0x808080});
    // Hardly to be told apart, and a table costs more.
    EXPECT_TRUE(indexer.index(std::vector<Pixel>{0x818181, 0xFFFFFF}, 255).palette.empty());
    // Told apart.
    EXPECT_EQ(indexer.index(std::vector<Pixel>{0x909090, 0xFFFFFF}, 255).palette,
              (Palette{0x909090, 0xFFFFFF}));
    // A large flat area.
    std::vector<Pixel> flat(2000, 0x818181);
    flat.push_back(0xFFFFFF);
    EXPECT_EQ(indexer.index(flat, 255).palette, (Palette{0x818181, 0xFFFFFF}));
    // Many such colours.
    Palette shared{0};
    std::vector<Pixel> near;
    for (Pixel i = 0; i < 250; ++i) {
        shared.push_back(i * 0x010101);
        near.insert(near.end(), 60, i * 0x010101 + 1);
    }
    const IndexedColors large = ColorIndexer(shared).index(near, 255);
    for (std::size_t i = 0; i < near.size(); ++i)
        EXPECT_EQ(large.palette.at(large.indices[i]), near[i]);
}

TEST(ColorIndexer, AColorThatPrevailsInRowsAndAloneKeepsOthersInPlace) {
    // The same colour is counted among the flat ones and among its near ones.
    std::vector<Pixel> colors = randomColors(30'000, 6);
    for (int i = 0; i < 20'000; ++i) {
        colors.insert(colors.end(), 4, 0x404850);
        colors.push_back(0x404850 + 0x010000 * static_cast<Pixel>(i % 2));
        colors.push_back(randomColors(1, static_cast<unsigned>(i))[0]);
    }
    const IndexedColors indexed = indexColors(colors, 255);
    expectSound(colors, indexed, 255);
    EXPECT_LT(meanDistance(colors, indexed), 6);
}

TEST(ColorIndexer, OneColorOfManyIsAllowed) {
    const std::vector<Pixel> colors = randomColors(1'000, 5);
    const IndexedColors indexed = indexColors(colors, 1);
    expectSound(colors, indexed, 1);
}

// Far more colours than are looked at one by one, as in a photograph of a few things.
std::vector<Pixel> photograph(unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> spread(0, 12);
    std::vector<Pixel> colors(100'000);
    for (std::size_t i = 0; i < colors.size(); ++i) {
        Pixel color = 0;
        const Pixel thing = std::array<Pixel, 4>{0x406030, 0x90A0C0, 0xC0A080, 0x302820}[i / 500 % 4];
        for (int shift = 0; shift < 24; shift += 8)
            color |= static_cast<Pixel>(std::clamp((thing >> shift & 0xFF) + spread(random), 0.0, 255.0))
                     << shift;
        colors[i] = color;
    }
    return colors;
}

TEST(ColorIndexer, EveryColorOfAPhotographGetsItsNearestEntry) {
    const std::vector<Pixel> colors = photograph(5);
    const IndexedColors indexed = indexColors(colors, 255);
    expectSound(colors, indexed, 255);
    EXPECT_TRUE(indexed.manyColors);
    IndexedColors thorough = indexed;
    const NearestColor nearest(indexed.palette);
    for (std::size_t i = 0; i < colors.size(); ++i)
        thorough.indices[i] = nearest.find(perceptualColor(colors[i]));
    EXPECT_LE(meanDistance(colors, indexed), 1.005 * meanDistance(colors, thorough));
}

// As many as are still looked at one by one, most of them rare.
TEST(ColorIndexer, AmongThousandsOfColorsFrequentOnesStayExactAndAllGetTheirNearestEntry) {
    std::vector<Pixel> colors = photograph(8);
    colors.resize(7000);
    const std::vector<Pixel> frequent = randomColors(100, 9);
    for (const Pixel color : frequent)
        colors.insert(colors.end(), 300, color);
    const IndexedColors indexed = indexColors(colors, 255);
    expectSound(colors, indexed, 255);
    EXPECT_FALSE(indexed.manyColors);
    // Against those alone, which have the whole palette for themselves.
    const std::vector<Pixel> rare(colors.begin(), colors.begin() + 7000);
    IndexedColors ofRare = indexed;
    ofRare.indices.resize(rare.size());
    EXPECT_LT(meanDistance(rare, ofRare), 1.5 * meanDistance(rare, indexColors(rare, 255)));
    const NearestColor nearest(indexed.palette);
    for (std::size_t i = 0; i < 7000; ++i)
        ASSERT_EQ(indexed.indices[i], nearest.find(perceptualColor(colors[i])));
    for (std::size_t i = 7000; i < colors.size(); ++i)
        ASSERT_EQ(indexed.palette[indexed.indices[i]], colors[i]);
}

TEST(ColorIndexer, FinePrecisionComesNearer) {
    const std::vector<Pixel> colors = photograph(6);
    const ColorIndexer indexer({0, 0xFF00FF});
    const double fine = meanDistance(colors, indexer.index(colors, 255, Precision::fine));
    const double coarse = meanDistance(colors, indexer.index(colors, 255, Precision::coarse));
    EXPECT_LT(fine, coarse);
    EXPECT_LT(coarse, 1.3 * fine);
}

TEST(ColorIndexer, SaysWhetherAllColorsAreNear) {
    std::vector<Pixel> greys;
    for (Pixel color = 0; color < 300; ++color)
        greys.push_back(color % 256 * 0x010101 ^ color / 256);
    EXPECT_TRUE(indexColors(greys, 255).allNear);
    EXPECT_TRUE(indexColors(randomColors(20, 7), 255).allNear);
    EXPECT_FALSE(indexColors(greys, 16).allNear);
    EXPECT_FALSE(indexColors(randomColors(4000, 8), 255).allNear);
}

} // namespace
} // namespace clipwren
