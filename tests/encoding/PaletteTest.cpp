#include "encoding/CellwiseNearest.h"
#include "encoding/CommonPalette.h"
#include "encoding/NearestColor.h"
#include "encoding/PaletteIndex.h"
#include "encoding/PaletteQuantizer.h"

#include "tests/support/TestPicture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <set>

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

// Palettes of colours from everywhere, and of dark and bright ones close together.
std::vector<Palette> variousPalettes(std::mt19937& random) {
    std::vector<Palette> result;
    for (const std::size_t count : {1u, 2u, 7u, 64u, 255u, 256u})
        for (const Pixel mask : {0xFFFFFFu, 0x1F1F1Fu, 0x070707u}) {
            std::set<Pixel> distinct;
            while (distinct.size() < count)
                distinct.insert((static_cast<Pixel>(random()) & mask) ^ (count % 2 ? 0xFFFFFFu & ~mask : 0));
            result.emplace_back(distinct.begin(), distinct.end());
            std::shuffle(result.back().begin(), result.back().end(), random);
        }
    return result;
}

TEST(NearestColor, AgreesWithLookingAtEachEntry) {
    std::mt19937 random(3);
    for (const Palette& palette : variousPalettes(random)) {
        const NearestColor nearest(palette);
        for (int i = 0; i < 500; ++i) {
            // Some between the entries, some anywhere.
            const auto any = static_cast<Pixel>(random());
            const Pixel wanted = i % 2 ? any : palette[any % palette.size()] ^ (any >> 8 & 0x070707);
            const PerceptualColor color = perceptualColor(wanted & 0xFFFFFF);
            const auto distance = [&](Pixel entry) { return squaredDistance(perceptualColor(entry), color); };
            const auto expected = std::min_element(
                palette.begin(), palette.end(), [&](Pixel a, Pixel b) { return distance(a) < distance(b); });
            ASSERT_EQ(nearest.find(color), expected - palette.begin());
            // Another entry, or the nearest itself, bounds the search.
            for (const Pixel known : {palette[random() % palette.size()], *expected})
                ASSERT_EQ(nearest.findWithin(color, distance(known)), expected - palette.begin());
        }
    }
}

TEST(NearestColor, OfEqualEntriesTheFirst) {
    const Palette palette{0x101010, 0xFF0000, 0x808080, 0xFF0000, 0x808080};
    const NearestColor nearest(palette);
    EXPECT_EQ(nearest.find(perceptualColor(0xFE0101)), 1);
    EXPECT_EQ(nearest.find(perceptualColor(0x808081)), 2);
    EXPECT_EQ(nearest.findWithin(perceptualColor(0x808080), 0), 2);
}

TEST(CellwiseNearest, FindsThePalettesOwnColorsExactly) {
    std::mt19937 random(4);
    for (const Palette& palette : variousPalettes(random)) {
        CellwiseNearest nearest(palette);
        for (std::size_t i = 0; i < palette.size(); ++i)
            ASSERT_EQ(nearest.find(palette[i]), i) << palette.size();
    }
}

TEST(CellwiseNearest, IsAsGoodAsLookingAtEachEntry) {
    std::mt19937 random(5);
    for (const Palette& palette : variousPalettes(random)) {
        CellwiseNearest cellwise(palette);
        const NearestColor thorough(palette);
        double sum = 0, least = 0;
        for (int i = 0; i < 4000; ++i) {
            // Near to an entry, as the colours are that palettes are made for, or anywhere.
            const Pixel color =
                i % 2 ? random() & 0xFFFFFF : palette[random() % palette.size()] ^ (random() & 0x0F0F0F);
            const PerceptualColor place = perceptualColor(color);
            const auto distance = [&](std::uint8_t entry) {
                return std::sqrt(squaredDistance(place, perceptualColor(palette[entry]))) / perceptualUnit;
            };
            const double found = distance(cellwise.find(color));
            const double best = distance(thorough.find(place));
            // Of two that are as good as equally near it may be either.
            ASSERT_LE(found, best * 1.1 + 0.5) << palette.size() << ' ' << color;
            sum += found;
            least += best;
        }
        EXPECT_LE(sum, least * 1.002) << palette.size();
    }
}

TEST(CellwiseNearest, NoiseIsLookedForOneByOneInTheEnd) {
    std::mt19937 random(6);
    const Palette palette = variousPalettes(random).back();
    CellwiseNearest cellwise(palette);
    for (Pixel color = 0; color < 0x1000000; color += 0x123)
        ASSERT_LT(cellwise.find(color), palette.size());
    const NearestColor thorough(palette);
    for (const Pixel color : palette)
        EXPECT_EQ(palette[cellwise.find(color)], color);
    for (int i = 0; i < 1000; ++i) {
        const Pixel color = random() & 0xFFFFFF;
        const auto distance = [&](std::uint8_t entry) {
            return std::sqrt(squaredDistance(perceptualColor(color), perceptualColor(palette[entry])));
        };
        EXPECT_LE(distance(cellwise.find(color)),
                  distance(thorough.find(perceptualColor(color))) * 1.1f + perceptualUnit / 2);
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

TEST(CommonPalette, BeginsWithWhatMostFramesUse) {
    TestPicture picture(200, 100, 0xFF111111);
    CommonPalette common;
    Image before = picture.image();
    const auto show = [&](const PixelRect& rect, Pixel color) {
        picture.fill(rect, color);
        const Image after = picture.imageAfter(before);
        common.consider(before, after);
        before = after;
    };
    show({0, 0, 60, 60}, 0xFF445566);
    for (int i = 0; i < 3; ++i)
        show({100 + i, 10, 1, 1}, 0xFFABCDEF);
    EXPECT_EQ(common.choose(255), (Palette{0xABCDEF, 0x445566}));
}

TEST(CommonPalette, LeavesOutFramesThatBringTheirOwn) {
    TestPicture picture(200, 100, 0xFF111111);
    const Image before = picture.image();
    for (int i = 0; i < 300; ++i)
        picture.at(i % 60, i / 60) = 0xFF000000 + static_cast<Pixel>(i) * 0x0703;
    CommonPalette common;
    common.consider(before, picture.imageAfter(before));
    EXPECT_EQ(common.choose(255).size(), 1u);
}

TEST(PaletteQuantizer, KeepsEntriesApart) {
    std::vector<WeightedColor> colors;
    for (Pixel grey = 0; grey < 256; ++grey)
        colors.push_back({grey * 0x010101, 1});
    const auto nearest = [](const Palette& palette) {
        float least = std::numeric_limits<float>::max();
        for (std::size_t i = 0; i < palette.size(); ++i)
            for (std::size_t j = 0; j < i; ++j)
                least = std::min(least,
                                 squaredDistance(perceptualColor(palette[i]), perceptualColor(palette[j])));
        return std::sqrt(least) / perceptualUnit;
    };
    EXPECT_LT(nearest(quantize(colors, 255)), 0.5);
    const Palette apart = quantize(colors, 255, 2);
    EXPECT_GE(nearest(apart), 2);
    EXPECT_GT(apart.size(), 20u);
}

TEST(PaletteQuantizer, EvenlyLeavesNoColorFarFromAll) {
    // Most lie close together, a few far out.
    std::mt19937 random(5);
    std::vector<WeightedColor> colors;
    for (int i = 0; i < 2000; ++i)
        colors.push_back({0x808080 + (static_cast<Pixel>(random()) & 0x0F0F0F), 100});
    for (int i = 0; i < 60; ++i)
        colors.push_back({static_cast<Pixel>(random()) & 0xFFFFFF, 1});
    const auto worst = [&](const Palette& palette) {
        const NearestColor nearest(palette);
        float result = 0;
        for (const WeightedColor& color : colors) {
            const PerceptualColor place = perceptualColor(color.color);
            result = std::max(result, squaredDistance(place, perceptualColor(palette[nearest.find(place)])));
        }
        return result;
    };
    const Palette even = quantizeEvenly(colors, 64);
    EXPECT_LE(even.size(), 64u);
    EXPECT_LT(worst(even) * 2, worst(quantize(colors, 64)));
}

TEST(PaletteQuantizer, FewColorsAreAllKept) {
    std::mt19937 random(6);
    std::vector<WeightedColor> colors;
    for (int i = 0; i < 255; ++i)
        colors.push_back(
            {(static_cast<Pixel>(random()) & 0xFFFF00) | static_cast<Pixel>(i), i < 5 ? 1e6f : 1.0f});
    for (Palette palette : {quantizeEvenly(colors, 255), quantize(colors, 255)}) {
        std::sort(palette.begin(), palette.end());
        for (const WeightedColor& color : colors)
            EXPECT_TRUE(std::binary_search(palette.begin(), palette.end(), color.color));
    }
}

TEST(PaletteQuantizer, EquallyFrequentColorsFitTheLimit) {
    std::vector<WeightedColor> colors;
    for (Pixel i = 0; i < 16; ++i)
        colors.push_back({i * 0x101010, 1});
    EXPECT_EQ(quantize(colors, 16).size(), 16u);
    EXPECT_EQ(quantizeEvenly(colors, 16).size(), 16u);
    EXPECT_LE(quantize(colors, 4).size(), 4u);
}

TEST(CommonPalette, WithoutChangesHasOneColor) { EXPECT_EQ(CommonPalette().choose(255).size(), 1u); }

} // namespace
} // namespace clipwren
