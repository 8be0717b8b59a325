#include "platform/linux/x11/ScreenLayout.h"

#include <gtest/gtest.h>

namespace clipwren {

namespace {

TEST(ScreenLayout, PutsTheOriginAtTheBottomLeftOfThePrimary) {
    const auto screens = layOutScreens({{.id = 7, .pixels = {0, 0, 1280, 1024}},
                                        {.id = 9, .pixels = {1280, 100, 640, 800}, .isPrimary = true}},
                                       1);
    ASSERT_EQ(screens.size(), 2u);
    EXPECT_EQ(screens[0].id, 9u);
    EXPECT_EQ(screens[0].frame, (Rect{0, 0, 640, 800}));
    EXPECT_EQ(screens[1].id, 7u);
    EXPECT_EQ(screens[1].frame, (Rect{-1280, -124, 1280, 1024}));
    EXPECT_EQ(screens[1].pixels, (PixelRect{0, 0, 1280, 1024}));
}

TEST(ScreenLayout, KeepsTheOrderOfTheOthersAndTakesTheFirstForAMissingPrimary) {
    const auto screens = layOutScreens({{.id = 1, .pixels = {0, 0, 100, 100}},
                                        {.id = 2, .pixels = {100, 0, 100, 100}},
                                        {.id = 3, .pixels = {200, 0, 100, 100}, .isPrimary = true}},
                                       1);
    ASSERT_EQ(screens.size(), 3u);
    EXPECT_EQ(screens[0].id, 3u);
    EXPECT_EQ(screens[1].id, 1u);
    EXPECT_EQ(screens[2].id, 2u);
    EXPECT_EQ(layOutScreens({{.id = 5, .pixels = {10, 10, 10, 10}}}, 1)[0].frame, (Rect{0, 0, 10, 10}));
    EXPECT_TRUE(layOutScreens({}, 1).empty());
}

TEST(ScreenLayout, LeavesOutMirroredAndEmptyMonitors) {
    const auto screens = layOutScreens({{.id = 1, .pixels = {0, 0, 1024, 768}},
                                        {.id = 2, .pixels = {0, 0, 1920, 1080}},
                                        {.id = 3, .pixels = {0, 0, 1920, 1080}},
                                        {.id = 4, .pixels = {1920, 0, 0, 1080}},
                                        {.id = 5, .pixels = {1900, 0, 800, 600}}},
                                       1);
    ASSERT_EQ(screens.size(), 2u);
    EXPECT_EQ(screens[0].id, 2u);
    EXPECT_EQ(screens[1].id, 5u);
}

TEST(ScreenLayout, CountsPointsOfAScaledServer) {
    const auto screens = layOutScreens({{.id = 1, .pixels = {0, 0, 3840, 2160}, .isPrimary = true},
                                        {.id = 2, .pixels = {3840, 160, 1600, 1200}}},
                                       2);
    EXPECT_EQ(screens[0].frame, (Rect{0, 0, 1920, 1080}));
    EXPECT_EQ(screens[1].frame, (Rect{1920, 400, 800, 600}));
    EXPECT_EQ(screens[1].scale, 2);
}

// As seen from the top left, everything stays where it was.
TEST(ScreenLayout, KeepsLocalPointsInAnotherMode) {
    NativeScreen screen{.pixels = {0, 0, 1600, 1200}, .frame = {0, 0, 800, 600}, .scale = 2};
    EXPECT_EQ(screen.localBounds(), (Rect{0, 0, 800, 600}));
    const Rect rect{100, 50, 60, 40};
    const PixelRect before = screen.pixelsTouching(rect);
    EXPECT_EQ(before, (PixelRect{200, 1020, 120, 80}));
    screen.pixels = {640, 0, 1280, 1060};
    EXPECT_EQ(screen.localBounds(), (Rect{0, 70, 640, 530}));
    EXPECT_EQ(screen.localPoint(0, 0), (Point{0, 600}));
    EXPECT_EQ(screen.localPoint(40, 1060), (Point{20, 70}));
    EXPECT_EQ(screen.pixelsTouching(rect), (PixelRect{200, 1020, 120, 40})) << "cut off below";
    screen.pixels = {0, 0, 2560, 1600};
    EXPECT_EQ(screen.localBounds(), (Rect{0, -200, 1280, 800}));
    EXPECT_EQ(screen.pixelsTouching(rect), before);
    EXPECT_EQ(screen.pixelsTouching({750, -20, 100, 50}), (PixelRect{1500, 1140, 200, 100}))
        << "no longer cut off";
}

TEST(ScreenLayout, ConvertsPointerPositionsWithoutClamping) {
    const NativeScreen screen{.pixels = {3840, 160, 1600, 1200}, .frame = {1920, 400, 800, 600}, .scale = 2};
    EXPECT_EQ(screen.localPoint(0, 0), (Point{0, 600}));
    EXPECT_EQ(screen.localPoint(101, 1199), (Point{50.5, 0.5}));
    EXPECT_EQ(screen.localPoint(-20, 1300), (Point{-10, -50}));
}

TEST(ScreenLayout, FindsThePixelsUnderARectangle) {
    const NativeScreen screen{.pixels = {0, 0, 1600, 1200}, .frame = {0, 0, 1600, 1200}, .scale = 1};
    EXPECT_EQ(screen.pixelsTouching({100, 200, 320, 240}), (PixelRect{100, 760, 320, 240}));
    EXPECT_EQ(screen.pixelsTouching({100.5, 200.25, 10, 10}), (PixelRect{100, 989, 11, 11}));
    EXPECT_EQ(screen.pixelsTouching({-50, -50, 60, 60}), (PixelRect{0, 1190, 10, 10}));
    EXPECT_TRUE(screen.pixelsTouching({1600, 0, 100, 100}).isEmpty());
    EXPECT_EQ(screen.pixelsTouching({-1e300, -1e300, 2e300, 2e300}), (PixelRect{0, 0, 1600, 1200}));
}

TEST(ScreenLayout, GivesADraggedRectangleBackToThePixel) {
    for (const double scale : {1.0, 1.25, 1.5, 5.0 / 3, 2.0, 101.0 / 96}) {
        const auto screens = layOutScreens({{.id = 1, .pixels = {13, 17, 1918, 1077}, .isPrimary = true},
                                            {.id = 2, .pixels = {1931, 5, 1366, 769}}},
                                           scale);
        const NativeScreen& screen = screens[1];
        for (int step = 0; step < 300; ++step) {
            const Point a = screen.localPoint(step, 700 - step);
            const Point b = screen.localPoint(2 * step + 8, 761);
            // By way of global points, as the region travels.
            const Rect region{screen.frame.x + a.x, screen.frame.y + b.y, b.x - a.x, a.y - b.y};
            const Rect local{region.x - screen.frame.x, region.y - screen.frame.y, region.width,
                             region.height};
            EXPECT_EQ(screen.pixelsTouching(local), (PixelRect{step, 700 - step, step + 8, 61 + step}));
        }
    }
}

TEST(ScreenLayout, ReadsTheScaleOfTheResourceDatabase) {
    EXPECT_EQ(scaleFromResources("Xcursor.size:\t24\nXft.dpi:\t192\nXft.hinting:\t1\n"), 2);
    EXPECT_EQ(scaleFromResources("Xft.dpi: 120"), 1.25);
    EXPECT_EQ(scaleFromResources(""), 1);
    EXPECT_EQ(scaleFromResources("Other.Xft.dpi: 192\n"), 1);
    for (const char* senseless : {"Xft.dpi:", "Xft.dpi:\t\n", "Xft.dpi: many", "Xft.dpi: 72", "Xft.dpi: -192",
                                  "Xft.dpi: 1e9", "Xft.dpi: nan", "Xft.dpi: inf"})
        EXPECT_EQ(scaleFromResources(senseless), 1) << senseless;
}

} // namespace

} // namespace clipwren
