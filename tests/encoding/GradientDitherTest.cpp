#include "encoding/GradientDither.h"

#include "encoding/NearestColor.h"
#include "tests/support/TestPicture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace clipwren {
namespace {

// Greys six steps apart.
Palette greys() {
    Palette palette;
    for (Pixel value = 0; value < 256; value += 6)
        palette.push_back(value * 0x010101);
    return palette;
}

std::vector<std::uint8_t> nearestIndices(const FrameChange& change, const Palette& palette) {
    const NearestColor nearest(palette);
    std::vector<std::uint8_t> indices;
    for (const Pixel color : change.colors)
        indices.push_back(nearest.find(perceptualColor(color)));
    return indices;
}

// A grey slope from left to right, four pixels a step.
TestPicture slope() {
    TestPicture picture(256, 64, 0xFF000000);
    for (int x = 0; x < 256; ++x)
        picture.fill({x, 0, 1, 64}, 0xFF000000 + static_cast<Pixel>(100 + x / 4) * 0x010101);
    return picture;
}

int grey(Pixel color) { return static_cast<int>(color & 0xFF); }

// The mean of each block of 8 x 8 pixels in the palette's colours, less that of the picture's own; the
// largest.
double worstMeanError(const FrameChange& change, const Palette& palette,
                      const std::vector<std::uint8_t>& indices) {
    std::vector<double> sums(32 * 8);
    std::size_t next = 0;
    for (const PixelRun& run : change.runs)
        for (int x = run.x; x < run.x + run.length; ++x, ++next)
            sums[static_cast<std::size_t>(run.y / 8 * 32 + x / 8)] +=
                grey(palette[indices[next]]) - grey(change.colors[next]);
    double worst = 0;
    for (const double sum : sums)
        worst = std::max(worst, std::abs(sum) / 64);
    return worst;
}

TEST(GradientDither, ASlopeGetsItsMeanBrightnessEverywhere) {
    const Image image = slope().image();
    const FrameChange change = wholeFrame(image);
    const Palette palette = greys();
    std::vector<std::uint8_t> indices = nearestIndices(change, palette);
    EXPECT_GT(worstMeanError(change, palette, indices), 2);
    ditherGradients(image, change, palette, indices);
    EXPECT_LT(worstMeanError(change, palette, indices), 0.8);
}

TEST(GradientDither, OnlyNeighboringEntriesAreMixed) {
    const Image image = slope().image();
    const FrameChange change = wholeFrame(image);
    const Palette palette = greys();
    std::vector<std::uint8_t> indices = nearestIndices(change, palette);
    ditherGradients(image, change, palette, indices);
    for (std::size_t i = 0; i < indices.size(); ++i)
        EXPECT_LT(std::abs(grey(palette[indices[i]]) - grey(change.colors[i])), 6);
}

TEST(GradientDither, PlaceAndColorAloneDecide) {
    TestPicture picture = slope();
    const Image before = picture.image();
    const FrameChange whole = wholeFrame(before);
    const Palette palette = greys();
    std::vector<std::uint8_t> all = nearestIndices(whole, palette);
    ditherGradients(before, whole, palette, all);

    const Image blank = TestPicture(256, 64, 0xFF000000).image();
    const FrameChange change = changeSince(blank, before);
    std::vector<std::uint8_t> changed = nearestIndices(change, palette);
    ditherGradients(before, change, palette, changed);
    ASSERT_EQ(change.runs.size(), whole.runs.size());
    EXPECT_EQ(changed, all);
}

void expectUntouched(const TestPicture& picture) {
    const Image image = picture.image();
    const FrameChange change = wholeFrame(image);
    const Palette palette = greys();
    const std::vector<std::uint8_t> nearest = nearestIndices(change, palette);
    std::vector<std::uint8_t> indices = nearest;
    ditherGradients(image, change, palette, indices);
    EXPECT_EQ(indices, nearest);
}

TEST(GradientDither, FlatAreasStayFlat) { expectUntouched(TestPicture(100, 40, 0xFF808080)); }

TEST(GradientDither, EdgesStaySharp) {
    TestPicture picture(100, 40, 0xFF808080);
    for (int x = 0; x < 100; x += 4)
        picture.fill({x, 0, 2, 40}, 0xFF202020);
    expectUntouched(picture);
}

TEST(GradientDither, WhatIsHealedIsNotMixed) {
    const Image image = slope().image();
    FrameChange change;
    change.addHealing(image, std::vector{PixelRect{0, 0, 64, 16}});
    const Palette palette = greys();
    const std::vector<std::uint8_t> nearest = nearestIndices(change, palette);
    std::vector<std::uint8_t> indices = nearest;
    ditherGradients(image, change, palette, indices);
    EXPECT_EQ(indices, nearest);
}

TEST(GradientDither, EntriesThatDifferTooMuchAreNotMixed) {
    const Image image = slope().image();
    const FrameChange change = wholeFrame(image);
    const Palette palette{0x000000, 0xFFFFFF};
    const std::vector<std::uint8_t> nearest = nearestIndices(change, palette);
    std::vector<std::uint8_t> indices = nearest;
    ditherGradients(image, change, palette, indices);
    EXPECT_EQ(indices, nearest);
}

} // namespace
} // namespace clipwren
