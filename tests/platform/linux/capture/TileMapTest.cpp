#include "platform/linux/capture/TileMap.h"

#include <gtest/gtest.h>

#include <random>

namespace clipwren {

namespace {

using Rects = std::vector<PixelRect>;

} // namespace

TEST(TileMap, IsEmptyAtFirstAndAfterClearing) {
    TileMap map({200, 100});
    EXPECT_TRUE(map.isEmpty());
    EXPECT_TRUE(map.rects().empty());
    map.mark({0, 0, 1, 1});
    EXPECT_FALSE(map.isEmpty());
    map.clear();
    EXPECT_TRUE(map.isEmpty());
    EXPECT_TRUE(map.rects().empty());
}

TEST(TileMap, MarksWholeTilesUpToThePicturesEdge) {
    TileMap map({200, 100});
    map.mark({63, 15, 2, 2});
    EXPECT_EQ(map.rects(), (Rects{{0, 0, 128, 32}}));
    map.clear();
    map.mark({199, 99, 1, 1});
    EXPECT_EQ(map.rects(), (Rects{{192, 96, 8, 4}}));
}

TEST(TileMap, IgnoresWhatLiesOutside) {
    TileMap map({200, 100});
    map.mark({-10, -10, 10, 200});
    map.mark({200, 0, 10, 10});
    map.mark({0, 0, 0, 10});
    EXPECT_TRUE(map.isEmpty());
    map.mark({-1000, -1000, 5000, 5000});
    EXPECT_EQ(map.rects(), (Rects{{0, 0, 200, 100}}));
}

TEST(TileMap, KeepsSeparatePlacesApart) {
    TileMap map({640, 160});
    map.mark({0, 0, 64, 16});
    map.mark({128, 0, 64, 48});
    map.mark({0, 64, 64, 16});
    EXPECT_EQ(map.rects(), (Rects{{0, 0, 64, 16}, {128, 0, 64, 48}, {0, 64, 64, 16}}));
}

TEST(TileMap, CoversExactlyTheTilesTouched) {
    std::mt19937 random(3);
    for (int round = 0; round < 200; ++round) {
        const PixelSize size{1 + static_cast<int>(random() % 700), 1 + static_cast<int>(random() % 300)};
        TileMap map(size);
        Rects marked;
        for (unsigned i = 0; i < random() % 12; ++i) {
            marked.push_back({static_cast<int>(random() % 800) - 50, static_cast<int>(random() % 400) - 50,
                              static_cast<int>(random() % 100), static_cast<int>(random() % 100)});
            map.mark(marked.back());
        }
        const Rects rects = map.rects();
        for (int y = 0; y < size.height; y += 4)
            for (int x = 0; x < size.width; x += 4) {
                const PixelRect tile =
                    PixelRect{x / 64 * 64, y / 16 * 16, 64, 16}.intersection({0, 0, size.width, size.height});
                int expected = 0, covered = 0;
                for (const PixelRect& rect : marked)
                    expected |= !rect.intersection(tile).isEmpty();
                for (const PixelRect& rect : rects)
                    covered += !rect.intersection({x, y, 1, 1}).isEmpty();
                ASSERT_EQ(covered, expected) << x << ", " << y;
            }
    }
}

TEST(Joined, JoinsWhatIsCheaperTogether) {
    EXPECT_EQ(joined({{0, 0, 10, 10}, {10, 0, 10, 10}}, 0), (Rects{{0, 0, 20, 10}}));
    EXPECT_EQ(joined({{0, 0, 10, 10}, {30, 0, 10, 10}}, 199), (Rects{{0, 0, 10, 10}, {30, 0, 10, 10}}));
    EXPECT_EQ(joined({{0, 0, 10, 10}, {30, 0, 10, 10}}, 200), (Rects{{0, 0, 40, 10}}));
    EXPECT_TRUE(joined({}, 100).empty());
}

TEST(Joined, ReadsASplinteredPictureAsOne) {
    Rects splinters;
    for (int i = 0; i < 100; ++i)
        splinters.push_back({i * 50, i * 50, 2, 2});
    EXPECT_EQ(joined(splinters, 0), (Rects{{0, 0, 4952, 4952}}));
}

TEST(Joined, CoversWhatWasGiven) {
    std::mt19937 random(5);
    for (int round = 0; round < 300; ++round) {
        Rects rects;
        for (unsigned i = 0; i < random() % 30; ++i)
            rects.push_back({static_cast<int>(random() % 1000), static_cast<int>(random() % 1000),
                             1 + static_cast<int>(random() % 200), 1 + static_cast<int>(random() % 200)});
        const Rects result = joined(rects, 5000);
        EXPECT_LE(result.size(), rects.size());
        for (const PixelRect& rect : rects)
            EXPECT_TRUE(std::any_of(result.begin(), result.end(), [&](const PixelRect& whole) {
                return whole.intersection(rect) == rect;
            }));
    }
}

} // namespace clipwren
