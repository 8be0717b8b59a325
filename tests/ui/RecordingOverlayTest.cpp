#include "ui/RecordingOverlay.h"

#include "tests/fakes/FakePlatform.h"

#include <gtest/gtest.h>

namespace clipwren {
namespace {

class RecordingOverlayTest : public testing::Test {
protected:
    FakePlatform platform;

    void SetUp() override { platform.screens.attached = {{{0, 0, 400, 300}, 1}, {{400, -100, 500, 400}, 2}}; }
    FakeWindowState& window(std::size_t index) { return *platform.windows.made.at(index); }
};

TEST_F(RecordingOverlayTest, VeilsEveryScreenInOrder) {
    RecordingOverlay overlay(platform.ports, {50, 60, 100, 80});
    EXPECT_TRUE(overlay.windowNumbers().empty());
    overlay.show();
    ASSERT_EQ(platform.windows.made.size(), 2u);
    EXPECT_EQ(overlay.windowNumbers(), (std::vector<std::int64_t>{window(0).number, window(1).number}));
    for (std::size_t i = 0; i < 2; ++i) {
        const auto& options = window(i).options;
        EXPECT_EQ(options.contentRect, platform.screens.attached[i].frame);
        EXPECT_EQ(options.level, WindowLevel::shielding);
        EXPECT_TRUE(options.ignoresMouseEvents);
        EXPECT_FALSE(options.canBecomeKey);
        EXPECT_EQ(options.collectionBehavior, 337u);
        EXPECT_EQ(options.sharing, WindowSharing::none);
        EXPECT_TRUE(window(i).isVisible);
        EXPECT_FALSE(window(i).wasMadeKey);
    }
    EXPECT_EQ(platform.application.activations, 0);
}

TEST_F(RecordingOverlayTest, TheRegionIsAClearHoleOfExactlyItsSize) {
    RecordingOverlay overlay(platform.ports, {50, 60, 100, 80});
    overlay.show();
    EXPECT_EQ(window(0).hole, (Rect{50, 60, 100, 80}));
    const auto canvas = window(0).painted();
    const Pixel veil = 115u << 24; // 0.45 of 255, black
    int clear = 0;
    for (int y = 0; y < 300; ++y)
        for (int x = 0; x < 400; ++x) {
            const bool inside = x >= 50 && x < 150 && y >= 60 && y < 140;
            EXPECT_EQ(canvas->pixelAt(x, y), inside ? 0u : veil) << x << "," << y;
            clear += inside ? 1 : 0;
        }
    EXPECT_EQ(clear, 8000);
    // The other screen is veiled wholly.
    ASSERT_EQ(window(1).painted()->operations.size(), 1u);
    EXPECT_EQ(window(1).painted()->operations[0].rectangles.size(), 1u);
    EXPECT_EQ(window(1).painted()->operations[0].color, Color::black(0.45));
}

TEST_F(RecordingOverlayTest, ARegionOnTwoScreensLeavesAHoleOnEach) {
    RecordingOverlay overlay(platform.ports, {350, 0, 100, 80});
    overlay.show();
    EXPECT_EQ(window(0).hole, (Rect{350, 0, 100, 80}));
    EXPECT_EQ(window(1).hole, (Rect{-50, 100, 100, 80}));
    const auto first = window(0).painted();
    EXPECT_EQ(first->pixelAt(399, 0), 0u);
    EXPECT_NE(first->pixelAt(349, 0), 0u);
    const auto second = window(1).painted();
    EXPECT_EQ(second->pixelAt(49, 100), 0u);
    EXPECT_NE(second->pixelAt(50, 100), 0u);
    EXPECT_EQ(second->operations[0].rule, WindingRule::evenOdd);
}

TEST_F(RecordingOverlayTest, HideTakesTheWindowsDownAndForgetsThem) {
    RecordingOverlay overlay(platform.ports, {50, 60, 100, 80});
    overlay.show();
    overlay.hide();
    EXPECT_TRUE(platform.windows.visible().empty());
    EXPECT_TRUE(overlay.windowNumbers().empty());
}

TEST_F(RecordingOverlayTest, HideWithoutShowDoesNothing) {
    RecordingOverlay overlay(platform.ports, {50, 60, 100, 80});
    overlay.hide();
    EXPECT_TRUE(overlay.windowNumbers().empty());
    EXPECT_TRUE(platform.windows.events.empty());
}

TEST_F(RecordingOverlayTest, WithoutScreensNothingIsShown) {
    platform.screens.attached.clear();
    RecordingOverlay overlay(platform.ports, {50, 60, 100, 80});
    overlay.show();
    EXPECT_TRUE(overlay.windowNumbers().empty());
}

TEST_F(RecordingOverlayTest, EventsPassThrough) {
    RecordingOverlay overlay(platform.ports, {50, 60, 100, 80});
    overlay.show();
    window(0).drag({10, 10}, {200, 200});
    EXPECT_EQ(window(0).displayRequests, 0);
    EXPECT_EQ(platform.windows.visible().size(), 2u);
}

} // namespace
} // namespace clipwren
