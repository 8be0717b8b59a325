#include "encoding/Healer.h"

#include "tests/support/TestPicture.h"

#include <gtest/gtest.h>

namespace clipwren {
namespace {

constexpr std::uint32_t blockPixels = Image::blockWidth * Image::blockHeight;

class HealerTest : public testing::Test {
protected:
    // Two blocks side by side, a hundred rows of them.
    TestPicture picture{128, 1600, 0xFF808080};
    Image image = picture.image();
    Healer healer{{128, 1600}};

    std::vector<PixelRect> nextStillFrame() { return healer.choose(image, image); }
    void waitUntilStill() {
        for (int i = 0; i < 10; ++i) {
            nextStillFrame();
            healer.drawn(0);
        }
    }
};

TEST_F(HealerTest, LeavesAloneWhatIsRight) {
    waitUntilStill();
    EXPECT_TRUE(nextStillFrame().empty());
    healer.addMisfit(10, 10, blockPixels); // one step a pixel: nobody sees it
    EXPECT_TRUE(nextStillFrame().empty());
}

TEST_F(HealerTest, ChoosesTheWorstBlocksFirst) {
    waitUntilStill();
    for (int row = 0; row < 100; ++row) {
        healer.addMisfit(5, row * 16 + 3, blockPixels * 5);
        healer.addMisfit(70, row * 16, blockPixels * 10);
    }
    const auto first = nextStillFrame();
    EXPECT_EQ(first.size(), 34u); // one of six
    for (const PixelRect& block : first)
        EXPECT_EQ(block.x, 64);
}

TEST_F(HealerTest, WaitsUntilABlockStandsStill) {
    waitUntilStill();
    picture.fill({0, 0, 4, 4}, 0xFFFFFFFF);
    const Image changed = picture.imageAfter(image);
    healer.choose(image, changed);
    healer.addMisfit(0, 0, blockPixels * 20);
    EXPECT_TRUE(healer.choose(changed, changed).empty());
    EXPECT_TRUE(healer.choose(changed, changed).empty());
    EXPECT_EQ(healer.choose(changed, changed), (std::vector<PixelRect>{{0, 0, 64, 16}}));
}

TEST_F(HealerTest, GivesUpOnABlockThatGetsNoBetter) {
    waitUntilStill();
    int chosen = 0;
    for (int i = 0; i < 20; ++i) {
        healer.addMisfit(0, 0, blockPixels * 20);
        chosen += static_cast<int>(nextStillFrame().size());
    }
    EXPECT_EQ(chosen, 3);
}

TEST_F(HealerTest, ChangesLittleAtATime) {
    waitUntilStill();
    for (int row = 0; row < 100; ++row)
        for (const int x : {0, 64})
            healer.addMisfit(x, row * 16, blockPixels * 100);
    std::size_t chosen = 0;
    for (int i = 0; i < 100; ++i) {
        const std::size_t count = nextStillFrame().size();
        healer.drawn(static_cast<std::uint32_t>(count * blockPixels * 6));
        chosen += count;
    }
    // All frames together take about one step of the whole picture.
    const double steps = static_cast<double>(chosen * 6) / 200;
    EXPECT_GT(steps, 0.7);
    EXPECT_LT(steps, 1.5);
}

} // namespace
} // namespace clipwren
