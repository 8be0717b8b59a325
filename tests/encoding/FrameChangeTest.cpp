#include "encoding/FrameChange.h"

#include "tests/support/TestPicture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace clipwren {
namespace {

TEST(FrameChange, OfEqualPicturesIsEmpty) {
    const TestPicture picture(100, 40, 0xFF336699);
    EXPECT_TRUE(changeSince(picture.image(), picture.image()).isEmpty());
    const Image image = picture.image();
    EXPECT_TRUE(changeSince(image, image).isEmpty());
}

TEST(FrameChange, HoldsTheSmallestRectangleAndTheNewColors) {
    TestPicture picture(200, 50, 0xFF000000);
    const Image before = picture.image();
    picture.at(70, 20) = 0xFF112233;
    picture.at(71, 20) = 0xFF445566;
    picture.at(130, 33) = 0xFF778899;
    const FrameChange change = changeSince(before, picture.imageAfter(before));
    EXPECT_EQ(change.rect, (PixelRect{70, 20, 61, 14}));
    EXPECT_EQ(change.runs, (std::vector<PixelRun>{{70, 20, 2}, {130, 33, 1}}));
    EXPECT_EQ(change.colors, (std::vector<Pixel>{0x112233, 0x445566, 0x778899}));
}

TEST(FrameChange, OnePixelAtEveryCornerOfTheBlocksIsFound) {
    for (const auto& [x, y] : {std::pair{0, 0}, {63, 15}, {64, 16}, {199, 49}, {191, 47}, {192, 48}}) {
        TestPicture picture(200, 50, 0xFF202020);
        const Image before = picture.image();
        picture.at(x, y) = 0xFFFFFFFF;
        const FrameChange change = changeSince(before, picture.imageAfter(before));
        EXPECT_EQ(change.rect, (PixelRect{x, y, 1, 1}));
    }
}

// Rows of every length, at the ends of blocks too.
TEST(FrameChange, RunsHoldEveryChangedPixelOnceAndNoOther) {
    std::mt19937 random(1);
    TestPicture picture(150, 40);
    const Image before = picture.image();
    for (int i = 0; i < 120; ++i) {
        const int x = static_cast<int>(random() % 150);
        const int length = static_cast<int>(random() % 70);
        for (int end = x; end < std::min(x + length, 150); ++end)
            picture.at(end, i / 3) = 0xFF000001 + static_cast<Pixel>(end);
    }
    const FrameChange change = changeSince(before, picture.imageAfter(before));
    std::vector<Pixel> found(picture.pixels.size(), 0);
    std::size_t next = 0;
    for (const PixelRun& run : change.runs) {
        EXPECT_EQ(run.x / Image::blockWidth, (run.x + run.length - 1) / Image::blockWidth);
        for (int x = run.x; x < run.x + run.length; ++x)
            found[static_cast<std::size_t>(run.y * 150 + x)] += change.colors[next++];
    }
    EXPECT_EQ(next, change.colors.size());
    EXPECT_EQ(found, picture.colors());
}

TEST(FrameChange, AlphaAloneIsNoChange) {
    const TestPicture opaque(70, 20, 0xFF102030);
    const TestPicture clear(70, 20, 0x00102030);
    EXPECT_TRUE(changeSince(opaque.image(), clear.image()).isEmpty());
}

TEST(FrameChange, AWholeFrameHoldsEveryPixelOnce) {
    TestPicture picture(130, 35);
    for (std::size_t i = 0; i < picture.pixels.size(); ++i)
        picture.pixels[i] = 0xFF000000 | static_cast<Pixel>(i);
    const FrameChange change = wholeFrame(picture.image());
    EXPECT_EQ(change.rect, (PixelRect{0, 0, 130, 35}));
    ASSERT_EQ(change.colors.size(), picture.pixels.size());
    std::size_t next = 0;
    for (const PixelRun& run : change.runs)
        for (int i = 0; i < run.length; ++i)
            EXPECT_EQ(change.colors[next++], picture.at(run.x + i, run.y) & 0xFFFFFF);
}

TEST(FrameChange, ASampleLooksAtFewBlocks) {
    TestPicture picture(640, 160, 0xFF000000);
    const Image before = picture.image();
    picture.fill({0, 0, 640, 160}, 0xFFFFFFFF);
    const Image after = picture.imageAfter(before);
    EXPECT_EQ(sampledChangeSince(before, after, 10).colors.size(), 10u * 64 * 16);
    EXPECT_EQ(sampledChangeSince(before, after, 100).colors.size(), 100u * 64 * 16);
    EXPECT_EQ(sampledChangeSince(before, after, 1000).colors.size(), 100u * 64 * 16);
    EXPECT_TRUE(sampledChangeSince(before, before, 10).isEmpty());
}

} // namespace
} // namespace clipwren
