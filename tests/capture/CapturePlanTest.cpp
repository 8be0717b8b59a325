#include "capture/CapturePlan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace clipwren {
namespace {

TEST(CapturePlan, RegionsAreScaledDownToTheLargestWidthAndNeverEnlarged) {
    EXPECT_EQ(outputSize({1000, 500}, 480), (PixelSize{480, 240}));
    EXPECT_EQ(outputSize({300, 200}, 800), (PixelSize{300, 200}));
    EXPECT_EQ(outputSize({1000, 501}, 480), (PixelSize{480, 240}));
    EXPECT_EQ(outputSize({1001, 333}, 480), (PixelSize{480, 160}));
    EXPECT_EQ(outputSize({3, 1}, 800), (PixelSize{3, 2}));
    EXPECT_EQ(outputSize({10.5, 8.5}, 800), (PixelSize{11, 9}));
}

TEST(CapturePlanDeath, ASizeThatIsNoNumberEndsTheProgram) {
    EXPECT_DEATH(outputSize({std::numeric_limits<double>::quiet_NaN(), 100}, 800), "size");
    EXPECT_DEATH(outputSize({100, std::numeric_limits<double>::infinity()}, 800), "size");
    EXPECT_DEATH(outputSize({100, 1e30}, 800), "size");
}

TEST(CapturePlan, TheSourceRectangleIsFlippedWithinItsOwnScreen) {
    EXPECT_EQ(sourceRect({100, 200, 400, 300}, {0, 0, 1440, 900}), (Rect{100, 400, 400, 300}));
    EXPECT_EQ(sourceRect({1540, 100, 640, 360}, {1440, -180, 1920, 1080}), (Rect{100, 440, 640, 360}));
    // Not clipped: the region reaches beyond the left and the bottom edge.
    EXPECT_EQ(sourceRect({-50, -60, 200, 100}, {0, 0, 1440, 900}), (Rect{-50, 860, 200, 100}));
}

TEST(CapturePlan, TheFirstIntersectingScreenIsChosen) {
    const std::vector<Screen> screens{{{0, 0, 1440, 900}, 1}, {{1440, -180, 1920, 1080}, 2}};
    const std::optional<Screen> fallback = Screen{{9, 9, 9, 9}, 9};
    EXPECT_EQ(chooseScreen(screens, fallback, {1540, 100, 640, 360})->screenNumber, 2u);
    EXPECT_EQ(chooseScreen(screens, fallback, {1400, 100, 640, 360})->screenNumber, 1u);
    EXPECT_EQ(chooseScreen(screens, fallback, {5000, 100, 640, 360})->screenNumber, 9u);
    // Touching the edge is no intersection.
    EXPECT_EQ(chooseScreen(screens, fallback, {1440, 100, 640, 360})->screenNumber, 2u);
    EXPECT_FALSE(chooseScreen(screens, std::nullopt, {5000, 100, 640, 360}).has_value());
}

TEST(CapturePlan, AScreenWithoutANumberIsTheMainDisplay) {
    EXPECT_EQ(displayID({{0, 0, 10, 10}, 7}, 3), 7u);
    EXPECT_EQ(displayID({{0, 0, 10, 10}, std::nullopt}, 3), 3u);
}

TEST(CapturePlan, ExcludedNumbersThatMatchNoWindowAreIgnored) {
    const std::vector<ShareableWindow> windows{{10}, {11}, {12}, {4'294'967'295}};
    const std::vector<std::int64_t> numbers{4'294'967'295, 12, 99, 10};
    EXPECT_EQ(excludedWindows(windows, numbers), (std::vector<ShareableWindow>{{10}, {12}, {4'294'967'295}}));
    EXPECT_TRUE(excludedWindows(windows, {}).empty());
}

TEST(CapturePlanDeath, AWindowNumberBeyond32BitsEndsTheProgram) {
    const std::vector<std::int64_t> negative{-1};
    const std::vector<std::int64_t> large{4'294'967'296};
    EXPECT_DEATH(excludedWindows({}, negative), "window number");
    EXPECT_DEATH(excludedWindows({}, large), "window number");
}

TEST(CapturePlan, TheConfigurationSaysEverythingThatTheStreamNeeds) {
    const auto configuration = streamConfiguration({100, 200, 1000, 500}, {0, 0, 1440, 900},
                                                   RecordingResolution::width480, RecordingFPS::fps24);
    EXPECT_EQ(configuration.sourceRect, (Rect{100, 200, 1000, 500}));
    EXPECT_EQ(configuration.width, 480);
    EXPECT_EQ(configuration.height, 240);
    EXPECT_EQ(configuration.destinationRect, (Rect{0, 0, 480, 240}));
    EXPECT_TRUE(configuration.scalesToFit);
    EXPECT_EQ(configuration.minimumFrameInterval, (MediaTime{1, 24}));
    EXPECT_EQ(configuration.queueDepth, 6);
    EXPECT_EQ(configuration.pixelFormat, 0x42475241u);
    EXPECT_TRUE(configuration.showsCursor);
    EXPECT_FALSE(configuration.capturesAudio);
}

} // namespace
} // namespace clipwren
