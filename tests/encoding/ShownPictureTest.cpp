#include "encoding/ShownPicture.h"

#include "encoding/PaletteIndex.h"
#include "tests/support/TestPicture.h"

#include <gtest/gtest.h>

#include <vector>

namespace clipwren {
namespace {

constexpr Pixel black = 0, red = 0xFF0000, green = 0x00FF00;
const Palette palette{black, red, green};
constexpr std::uint8_t transparent = 3;
constexpr PixelSize size{64, 4};

constexpr IndexChoice drawn(std::uint8_t index) { return {index, index}; }
constexpr IndexChoice stays = drawn(transparent);

// A viewer who has been shown a picture, black with a red first column, and is shown the next.
class ShownPictureTest : public testing::Test {
protected:
    ShownPictureTest() {
        picture.fill({0, 0, 1, size.height}, red);
        draw(wholeFrame(picture.image()), Staying::alone);
    }

    std::vector<IndexChoice> drawNext(Staying staying, const Palette& colors = palette) {
        const Image before = last;
        return draw(changeSince(before, picture.image()), staying, colors);
    }

    TestPicture picture{size.width, size.height, black};

private:
    std::vector<IndexChoice> draw(const FrameChange& change, Staying staying,
                                  const Palette& colors = palette) {
        last = picture.image();
        const PaletteIndex entries(colors);
        std::vector<std::uint8_t> indices;
        for (const Pixel color : change.colors)
            indices.push_back(*entries.find(color));
        return shown.draw(change, indices, colors, transparent, staying, healer);
    }

    Image last = picture.image();
    ShownPicture shown{size};
    Healer healer{size};
};

TEST_F(ShownPictureTest, PixelsThatAreNotDrawnStay) {
    picture.fill({0, 1, 1, 1}, green);
    picture.fill({3, 1, 1, 1}, green);
    EXPECT_EQ(drawNext(Staying::alone), (std::vector<IndexChoice>{drawn(2), stays, stays, drawn(2)}));
}

TEST_F(ShownPictureTest, ShortRowsBetweenDrawnPixelsAreDrawnOnceMore) {
    picture.fill({0, 1, 1, 1}, green);
    picture.fill({17, 1, 1, 1}, green);
    std::vector<IndexChoice> expected(18, drawn(0));
    expected.front() = expected.back() = drawn(2);
    EXPECT_EQ(drawNext(Staying::exceptBriefly), expected);
}

TEST_F(ShownPictureTest, LongRowsBetweenDrawnPixelsStay) {
    picture.fill({0, 1, 1, 1}, green);
    picture.fill({18, 1, 1, 1}, green);
    std::vector<IndexChoice> expected(19, stays);
    expected.front() = expected.back() = drawn(2);
    EXPECT_EQ(drawNext(Staying::exceptBriefly), expected);
}

TEST_F(ShownPictureTest, ShortRowsGoOnInTheNextOne) {
    picture.fill({2, 0, 1, 1}, green);
    picture.fill({0, 1, 1, 1}, green);
    picture.fill({1, 2, 1, 1}, green);
    // Rows of three pixels: the first column was red.
    EXPECT_EQ(drawNext(Staying::exceptBriefly), (std::vector<IndexChoice>{drawn(1), drawn(0), drawn(2), //
                                                                          drawn(2), drawn(0), drawn(0), //
                                                                          drawn(1), drawn(2), drawn(0)}));
}

TEST_F(ShownPictureTest, LongRowsAtTheEndStayToo) {
    picture.fill({20, 0, 1, 1}, green);
    picture.fill({0, 1, 1, 1}, green);
    std::vector<IndexChoice> expected(42, stays);
    expected[20] = expected[21] = drawn(2);
    EXPECT_EQ(drawNext(Staying::exceptBriefly), expected);
}

TEST_F(ShownPictureTest, WhatNoEntryShowsStaysEvenBriefly) {
    picture.fill({0, 1, 1, 1}, green);
    picture.fill({2, 1, 1, 1}, green);
    EXPECT_EQ(drawNext(Staying::exceptBriefly, {red, green}),
              (std::vector<IndexChoice>{drawn(1), stays, drawn(1)}));
}

TEST_F(ShownPictureTest, BothWaysAreLeftOpenToTheCompression) {
    picture.fill({0, 1, 1, 1}, green);
    picture.fill({63, 1, 1, 1}, green);
    std::vector<IndexChoice> expected(64, IndexChoice{transparent, 0});
    expected.front() = expected.back() = drawn(2);
    EXPECT_EQ(drawNext(Staying::asCompressed), expected);
}

} // namespace
} // namespace clipwren
