#include "ui/RegionSelector.h"

#include "tests/fakes/FakePlatform.h"

#include <gtest/gtest.h>

namespace clipwren {
namespace {

class RegionSelectorTest : public testing::Test {
protected:
    FakePlatform platform;
    std::vector<std::optional<Rect>> outcomes;
    std::shared_ptr<RegionSelector> selector;

    void SetUp() override {
        platform.screens.attached = {{{0, 0, 1440, 900}, 1}, {{1440, 0, 1920, 1080}, 2}};
        selector = RegionSelector::create(platform.ports, [this](std::optional<Rect> rect) {
            EXPECT_TRUE(platform.windows.visible().empty()) << "windows still up when the outcome was told";
            EXPECT_EQ(platform.windows.keyMonitorCount, 0);
            outcomes.push_back(rect);
        });
    }
    FakeWindowState& window(std::size_t index) { return *platform.windows.made.at(index); }
};

TEST_F(RegionSelectorTest, CoversEveryScreenInOrderThenWatchesTheKeys) {
    selector->show();
    ASSERT_EQ(platform.windows.made.size(), 2u);
    EXPECT_EQ(platform.windows.events, (std::vector<std::string>{"show 1", "show 2", "monitor keys"}));
    EXPECT_EQ(platform.application.activations, 1);
    for (std::size_t i = 0; i < 2; ++i) {
        const auto& options = window(i).options;
        EXPECT_EQ(options.contentRect, platform.screens.attached[i].frame);
        EXPECT_EQ(static_cast<int>(options.level), 1000);
        EXPECT_FALSE(options.ignoresMouseEvents);
        EXPECT_TRUE(options.acceptsMouseMovedEvents);
        EXPECT_TRUE(options.canBecomeKey);
        EXPECT_EQ(options.collectionBehavior, 0x111u);
        EXPECT_EQ(options.sharing, WindowSharing::none);
        EXPECT_TRUE(window(i).wasMadeKey);
        EXPECT_TRUE(window(i).hasCrosshair);
        EXPECT_FALSE(window(i).hole.has_value());
    }
}

TEST_F(RegionSelectorTest, ReportsTheSelectionInGlobalPoints) {
    selector->show();
    window(1).drag({100, 100}, {40, 300});
    EXPECT_EQ(outcomes, (std::vector<std::optional<Rect>>{Rect{1480, 100, 60, 200}}));
    EXPECT_TRUE(window(0).isDestroyed);
    EXPECT_TRUE(window(1).isDestroyed);
}

TEST_F(RegionSelectorTest, AClickAndATooSmallDragLeaveItUp) {
    selector->show();
    window(0).drag({10, 10}, {10, 10});
    window(0).drag({10, 10}, {17.9, 110});
    EXPECT_TRUE(outcomes.empty());
    EXPECT_EQ(platform.windows.visible().size(), 2u);
    window(0).drag({10, 10}, {18, 18});
    EXPECT_EQ(outcomes.size(), 1u);
}

TEST_F(RegionSelectorTest, EscapeCancelsAndIsSwallowedOtherKeysPass) {
    selector->show();
    EXPECT_FALSE(platform.windows.pressKey(KeyCode::g));
    EXPECT_FALSE(platform.windows.pressKey(52));
    EXPECT_TRUE(outcomes.empty());
    EXPECT_TRUE(platform.windows.pressKey(KeyCode::escape));
    EXPECT_EQ(outcomes, (std::vector<std::optional<Rect>>{std::nullopt}));
    EXPECT_FALSE(platform.windows.pressKey(KeyCode::escape));
}

TEST_F(RegionSelectorTest, ALockCancelsAlsoDuringADrag) {
    platform.session.willLock(); // before it is anybody's business
    selector->show();
    window(1).mouseDown({10, 10});
    window(1).mouseDragged({200, 200});
    platform.session.willLock();
    EXPECT_EQ(outcomes, (std::vector<std::optional<Rect>>{std::nullopt}));
    EXPECT_TRUE(window(0).isDestroyed && window(1).isDestroyed);
    platform.session.willLock();
    EXPECT_EQ(outcomes.size(), 1u);
}

TEST_F(RegionSelectorTest, OnlyTheFirstCompletionCounts) {
    selector->show();
    selector->complete(Rect{1, 2, 30, 40});
    selector->complete(std::nullopt);
    selector->complete(Rect{5, 6, 70, 80});
    EXPECT_EQ(outcomes, (std::vector<std::optional<Rect>>{Rect{1, 2, 30, 40}}));
}

TEST_F(RegionSelectorTest, WithoutScreensOnlyEscapeOrTheOwnerEndsIt) {
    platform.screens.attached.clear();
    selector->show();
    EXPECT_TRUE(platform.windows.made.empty());
    EXPECT_EQ(platform.windows.keyMonitorCount, 1);
    EXPECT_TRUE(platform.windows.pressKey(KeyCode::escape));
    EXPECT_EQ(outcomes.size(), 1u);
}

TEST_F(RegionSelectorTest, WithoutAKeyMonitorTheOwnerCanStillCancel) {
    platform.windows.refusesKeyMonitor = true;
    selector->show();
    EXPECT_FALSE(platform.windows.pressKey(KeyCode::escape));
    selector->complete(std::nullopt);
    EXPECT_EQ(outcomes.size(), 1u);
}

TEST_F(RegionSelectorTest, AWindowThatCannotBeMadeIsLeftOut) {
    platform.windows.refusesWindows = true;
    selector->show();
    EXPECT_EQ(platform.windows.keyMonitorCount, 1);
    selector->complete(std::nullopt);
    EXPECT_EQ(outcomes.size(), 1u);
}

TEST_F(RegionSelectorTest, AReleasedSelectorTakesItsWindowsDownWithoutAWord) {
    selector->show();
    selector.reset();
    EXPECT_TRUE(platform.windows.visible().empty());
    EXPECT_EQ(platform.windows.keyMonitorCount, 0);
    EXPECT_TRUE(outcomes.empty());
}

TEST_F(RegionSelectorTest, BeginsAnewOnTheScreensThatThereAreAfterAChange) {
    selector->show();
    window(1).mouseDown({10, 10});
    window(1).mouseDragged({200, 200});
    platform.screens.change({{{0, 0, 1024, 768}, 2}});
    ASSERT_EQ(platform.windows.visible().size(), 1u);
    EXPECT_TRUE(window(0).isDestroyed && window(1).isDestroyed);
    EXPECT_EQ(window(2).options.contentRect, (Rect{0, 0, 1024, 768}));
    EXPECT_TRUE(window(2).wasMadeKey);
    EXPECT_EQ(platform.windows.keyMonitorCount, 1) << "keys are watched all the time";
    EXPECT_EQ(std::ranges::count(platform.windows.events, "end key monitor"), 0);
    EXPECT_TRUE(outcomes.empty());
    window(2).drag({100, 100}, {40, 300});
    EXPECT_EQ(outcomes, (std::vector<std::optional<Rect>>{Rect{40, 100, 60, 200}}));
    platform.screens.change({{{0, 0, 1440, 900}, 1}});
    EXPECT_TRUE(platform.windows.visible().empty()) << "it is over";
}

TEST_F(RegionSelectorTest, EveryDragStepAsksForARepaint) {
    selector->show();
    window(0).mouseDown({10, 10});
    window(0).mouseDragged({50, 50});
    window(0).mouseDragged({60, 60});
    EXPECT_EQ(window(0).displayRequests, 3);
    EXPECT_EQ(window(1).displayRequests, 0);
}

} // namespace
} // namespace clipwren
