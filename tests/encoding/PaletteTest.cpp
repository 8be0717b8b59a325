#include "encoding/CommonPalette.h"
#include "encoding/NearestColor.h"
#include "encoding/PaletteIndex.h"

#include "tests/support/TestPicture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace clipwren {
namespace {

TEST(PaletteIndex, FindsExactlyWhatIsThere) {
    Palette palette;
    for (Pixel i = 0; i < 256; ++i)
        palette.push_back(i * 0x010307 & 0xFFFFFF);
    const PaletteIndex index(palette);
    for (std::size_t i = 0; i < palette.size(); ++i)
        EXPECT_EQ(index.find(palette[i]), i);
    EXPECT_FALSE(index.find(0x123456));
}

TEST(PaletteIndex, OfEqualEntriesTheFirstThatIsAColor) {
    EXPECT_EQ(PaletteIndex({7, 8, 7}).find(7), 0);
    EXPECT_EQ(PaletteIndex({7, 8, 7}, std::uint8_t{0}).find(7), 2);
}

TEST(NearestColor, AgreesWithLookingAtEachEntry) {
    std::mt19937 random(3);
    for (const std::size_t count : {1u, 2u, 7u, 64u, 255u, 256u}) {
        Palette palette;
        for (std::size_t i = 0; i < count; ++i)
            palette.push_back(random() & 0xFFFFFF);
        const NearestColor nearest(palette);
        for (int i = 0; i < 500; ++i) {
            const PerceptualColor color = perceptualColor(random() & 0xFFFFFF);
            const auto closer = [&](Pixel a, Pixel b) {
                return squaredDistance(perceptualColor(a), color) <
                       squaredDistance(perceptualColor(b), color);
            };
            const auto expected = std::min_element(palette.begin(), palette.end(), closer) - palette.begin();
            EXPECT_EQ(nearest.find(color), expected);
        }
    }
}

TEST(PerceptualColor, DistancesGrowWithDifferences) {
    const auto distance = [](Pixel a, Pixel b) {
        return squaredDistance(perceptualColor(a), perceptualColor(b));
    };
    EXPECT_EQ(distance(0x336699, 0x336699), 0);
    EXPECT_LT(distance(0x808080, 0x828282), distance(0x808080, 0x888888));
    EXPECT_LT(distance(0x808080, 0x808088), distance(0x808080, 0x888808));
    // Any two colours stay within what the search can hold.
    for (const Pixel a :
         {0x000000u, 0xFFFFFFu, 0xFF0000u, 0x00FF00u, 0x0000FFu, 0xFFFF00u, 0x00FFFFu, 0xFF00FFu})
        for (const Pixel b :
             {0x000000u, 0xFFFFFFu, 0xFF0000u, 0x00FF00u, 0x0000FFu, 0xFFFF00u, 0x00FFFFu, 0xFF00FFu})
            EXPECT_LT(distance(a, b), 1 << 23);
}

TEST(CommonPalette, HoldsTheColorsOfChangesMostUsefulFirst) {
    TestPicture picture(200, 100, 0xFF111111);
    CommonPalette common;
    Image before = picture.image();
    for (int i = 0; i < 10; ++i) {
        picture.fill({i * 10, 10, 5, 5}, 0xFFABCDEF);
        if (i == 3) picture.at(150, 50) = 0xFF445566;
        const Image after = picture.imageAfter(before);
        common.consider(before, after);
        before = after;
    }
    EXPECT_EQ(common.choose(255), (Palette{0xABCDEF, 0x445566}));
}

TEST(CommonPalette, WithoutChangesHasOneColor) { EXPECT_EQ(CommonPalette().choose(255).size(), 1u); }

} // namespace
} // namespace clipwren
