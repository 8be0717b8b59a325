#include "platform/linux/x11/X11CaptureRegion.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace clipwren {

namespace {

NativeScreen screenAt(const PixelRect& pixels, double scale = 1) {
    return {.id = 1, .pixels = pixels, .scale = scale};
}

} // namespace

TEST(NativeRegion, CountsFromTheScreensTopLeft) {
    EXPECT_EQ(nativeRegion(screenAt({1280, 100, 640, 800}), {10, 20, 300, 200}),
              (PixelRect{1290, 120, 300, 200}));
    EXPECT_EQ(nativeRegion(screenAt({0, 0, 1280, 1024}), {-30, -40, 2000, 60}),
              (PixelRect{-30, -40, 2000, 60}));
}

TEST(NativeRegion, TurnsPointsIntoPixels) {
    EXPECT_EQ(nativeRegion(screenAt({0, 0, 2560, 1440}, 2), {10.5, 20, 300, 100.5}),
              (PixelRect{21, 40, 600, 201}));
    // 1.25 pixels a point: the region of whole pixels comes back exactly in spite of the division.
    EXPECT_EQ(nativeRegion(screenAt({0, 0, 2560, 1440}, 1.25), {7 / 1.25, 11 / 1.25, 301 / 1.25, 99 / 1.25}),
              (PixelRect{7, 11, 301, 99}));
}

TEST(NativeRegion, RefusesWhatNoPictureHolds) {
    const NativeScreen screen = screenAt({0, 0, 1280, 1024});
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const Rect& rect :
         {Rect{0, 0, 0, 10}, Rect{0, 0, 10, -1}, Rect{nan, 0, 10, 10}, Rect{0, infinity, 10, 10},
          Rect{0, 0, nan, 10}, Rect{0, 0, 10, 1e300}, Rect{-1e9, 0, 10, 10}, Rect{0, 0, 40000, 10}})
        EXPECT_FALSE(nativeRegion(screen, rect));
}

TEST(VisibleParts, LieOnMonitorsAndInTheRoot) {
    const std::vector<NativeScreen> screens{screenAt({0, 0, 1280, 1024}), screenAt({1280, 100, 640, 800})};
    using Parts = std::vector<PixelRect>;
    EXPECT_EQ(visibleParts(screens, {1920, 1080}, {1200, 50, 200, 100}),
              (Parts{{0, 0, 80, 100}, {80, 50, 120, 50}}));
    EXPECT_EQ(visibleParts(screens, {1920, 1080}, {-50, -50, 100, 100}), (Parts{{50, 50, 50, 50}}));
    EXPECT_EQ(visibleParts(screens, {1300, 1080}, {1280, 100, 100, 100}), (Parts{{0, 0, 20, 100}}));
    EXPECT_TRUE(visibleParts(screens, {1920, 1080}, {1300, 0, 100, 100}).empty());
    EXPECT_TRUE(visibleParts({}, {1920, 1080}, {0, 0, 100, 100}).empty());
}

TEST(VisibleParts, DoNotOverlapWhereMonitorsDo) {
    std::mt19937 random(2);
    for (int round = 0; round < 300; ++round) {
        std::vector<NativeScreen> screens;
        for (unsigned i = 0; i < random() % 5; ++i)
            screens.push_back(
                screenAt({static_cast<int>(random() % 80) - 10, static_cast<int>(random() % 80) - 10,
                          1 + static_cast<int>(random() % 60), 1 + static_cast<int>(random() % 60)}));
        const PixelRect region{static_cast<int>(random() % 60) - 20, static_cast<int>(random() % 60) - 20, 70,
                               50};
        const auto parts = visibleParts(screens, {90, 80}, region);
        for (int y = 0; y < region.height; ++y)
            for (int x = 0; x < region.width; ++x) {
                const PixelRect native{region.x + x, region.y + y, 1, 1};
                int shown = 0, covered = 0;
                for (const NativeScreen& screen : screens)
                    shown |= !screen.pixels.intersection(native).intersection({0, 0, 90, 80}).isEmpty();
                for (const PixelRect& part : parts)
                    covered += !part.intersection({x, y, 1, 1}).isEmpty();
                ASSERT_EQ(covered, shown);
            }
    }
}

} // namespace clipwren
