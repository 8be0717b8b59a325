#pragma once

#include "platform/Windows.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace clipwren {

// Notes what happens to it.
struct NotingContent : CoveringWindowContent {
    struct Event {
        std::string name;
        Point point;
        friend bool operator==(const Event&, const Event&) = default;
    };
    std::vector<Event> mouse;
    int cursorUpdates = 0;
    std::function<void()> onMouseUp;

    void draw(Canvas& canvas, const Rect& bounds) override {
        const Rect rectangles[]{bounds};
        canvas.fill(rectangles, WindingRule::nonZero, Color::black(0.35));
    }
    void mouseDown(Point point) override { mouse.push_back({"down", point}); }
    void mouseDragged(Point point) override {
        // How many positions of a motion are told is up to the platform.
        if (!mouse.empty() && mouse.back().name == "dragged") mouse.pop_back();
        mouse.push_back({"dragged", point});
    }
    void mouseUp(Point point) override {
        mouse.push_back({"up", point});
        if (onMouseUp) onMouseUp();
    }
    void mouseEntered() override {}
    void cursorUpdate() override { ++cursorUpdates; }
};

// What every maker of covering windows does. `Subject` owns one, and a user:
//   Windows& windows();
//   Rect frame();                    where on a screen the windows may be, at least 400 × 300 points
//   void moveTo(Point), press(), release();   the pointer, points from the frame's origin; it begins outside
//   void tap(std::uint32_t keyCode); Escape or G
//   void settle();                   lets everything arrive
template <typename Subject>
class WindowsConformance : public testing::Test {
protected:
    Subject subject;
    std::shared_ptr<NotingContent> content = std::make_shared<NotingContent>();

    CoveringWindowOptions options() { return {.contentRect = subject.frame(), .canBecomeKey = true}; }

    std::unique_ptr<CoveringWindow> shown(const CoveringWindowOptions& options) {
        auto window = subject.windows().makeCoveringWindow(options);
        if (!window) return nullptr;
        window->setContent(content);
        window->makeKeyAndOrderFront();
        subject.settle();
        return window;
    }
    void drag(Point from, Point to) {
        subject.moveTo(from);
        subject.press();
        subject.moveTo({(from.x + to.x) / 2, (from.y + to.y) / 2});
        subject.moveTo(to);
        subject.release();
        subject.settle();
    }
};
TYPED_TEST_SUITE_P(WindowsConformance);

TYPED_TEST_P(WindowsConformance, NumbersItsWindows) {
    const auto one = this->shown(this->options());
    const auto other = this->shown(this->options());
    ASSERT_TRUE(one && other);
    EXPECT_GT(one->windowNumber(), 0);
    EXPECT_LE(one->windowNumber(), 0xFFFFFFFF);
    EXPECT_NE(one->windowNumber(), other->windowNumber());
}

TYPED_TEST_P(WindowsConformance, TellsADrag) {
    const auto window = this->shown(this->options());
    ASSERT_TRUE(window);
    this->drag({20, 30}, {220, 130});
    EXPECT_EQ(this->content->mouse, (std::vector<NotingContent::Event>{
                                        {"down", {20, 30}}, {"dragged", {220, 130}}, {"up", {220, 130}}}));
}

TYPED_TEST_P(WindowsConformance, ADragGoesOnBeyondTheEdges) {
    const auto window = this->shown(this->options());
    ASSERT_TRUE(window);
    this->drag({20, 30}, {-15, -25});
    this->drag({20, 30}, {440, 320});
    ASSERT_EQ(this->content->mouse.size(), 6u);
    EXPECT_EQ(this->content->mouse[1].point, (Point{-15, -25}));
    EXPECT_EQ(this->content->mouse[4].point, (Point{440, 320}));
}

TYPED_TEST_P(WindowsConformance, AClickIsNoDrag) {
    const auto window = this->shown(this->options());
    ASSERT_TRUE(window);
    this->subject.moveTo({50, 60});
    this->subject.press();
    this->subject.release();
    this->subject.settle();
    EXPECT_EQ(this->content->mouse,
              (std::vector<NotingContent::Event>{{"down", {50, 60}}, {"up", {50, 60}}}));
}

TYPED_TEST_P(WindowsConformance, AsksForTheCursorWhenShown) {
    const auto window = this->shown(this->options());
    ASSERT_TRUE(window);
    EXPECT_GE(this->content->cursorUpdates, 1);
    window->setCrosshairCursor();
    window->setCrosshairCursor();
}

TYPED_TEST_P(WindowsConformance, AWindowThatIgnoresTheMouseHearsNothing) {
    auto options = this->options();
    options.ignoresMouseEvents = true;
    const auto window = this->shown(options);
    ASSERT_TRUE(window);
    this->drag({20, 30}, {220, 130});
    EXPECT_TRUE(this->content->mouse.empty());
    EXPECT_EQ(this->content->cursorUpdates, 0);
}

TYPED_TEST_P(WindowsConformance, AHiddenWindowHearsNothing) {
    const auto window = this->shown(this->options());
    ASSERT_TRUE(window);
    window->orderOut();
    window->orderOut();
    this->drag({20, 30}, {220, 130});
    EXPECT_TRUE(this->content->mouse.empty());
}

TYPED_TEST_P(WindowsConformance, CanBeDestroyedByItsOwnContent) {
    auto window = this->shown(this->options());
    ASSERT_TRUE(window);
    this->content->onMouseUp = [&] { window = nullptr; };
    this->drag({20, 30}, {220, 130});
    EXPECT_FALSE(window);
    this->drag({20, 30}, {220, 130});
    EXPECT_EQ(this->content->mouse.size(), 3u);
}

TYPED_TEST_P(WindowsConformance, OutlivesItsContent) {
    const auto window = this->shown(this->options());
    ASSERT_TRUE(window);
    this->content = nullptr;
    window->setNeedsDisplay();
    this->drag({20, 30}, {220, 130});
    window->orderOut();
}

TYPED_TEST_P(WindowsConformance, MonitorsKeys) {
    const auto window = this->shown(this->options());
    std::vector<std::uint32_t> keys;
    auto monitor = this->subject.windows().monitorKeyDown([&](std::uint32_t keyCode) {
        keys.push_back(keyCode);
        return keyCode == KeyCode::escape;
    });
    ASSERT_TRUE(monitor);
    this->subject.tap(KeyCode::g);
    this->subject.tap(KeyCode::escape);
    this->subject.settle();
    EXPECT_EQ(keys, (std::vector<std::uint32_t>{KeyCode::g, KeyCode::escape}));
    monitor = nullptr;
    this->subject.tap(KeyCode::escape);
    this->subject.settle();
    EXPECT_EQ(keys.size(), 2u);
}

TYPED_TEST_P(WindowsConformance, KeepsKeysForTheMonitorFromTheMomentAWindowIsShown) {
    const auto window = this->subject.windows().makeCoveringWindow(this->options());
    ASSERT_TRUE(window);
    window->setContent(this->content);
    window->makeKeyAndOrderFront();
    this->subject.tap(KeyCode::escape);
    std::vector<std::uint32_t> keys;
    const auto monitor = this->subject.windows().monitorKeyDown([&](std::uint32_t keyCode) {
        keys.push_back(keyCode);
        return true;
    });
    ASSERT_TRUE(monitor);
    this->subject.settle();
    EXPECT_EQ(keys, (std::vector<std::uint32_t>{KeyCode::escape}));
}

TYPED_TEST_P(WindowsConformance, AKeyMonitorCanEndItself) {
    std::unique_ptr<KeyMonitor> monitor;
    int calls = 0;
    const std::string witness = "still whole";
    std::string seen;
    monitor = this->subject.windows().monitorKeyDown([&, witness](std::uint32_t) {
        monitor = nullptr;
        ++calls;
        seen = witness;
        return true;
    });
    ASSERT_TRUE(monitor);
    this->subject.tap(KeyCode::escape);
    this->subject.tap(KeyCode::escape);
    this->subject.settle();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(seen, witness);
}

REGISTER_TYPED_TEST_SUITE_P(WindowsConformance, NumbersItsWindows, TellsADrag, ADragGoesOnBeyondTheEdges,
                            AClickIsNoDrag, AsksForTheCursorWhenShown, AWindowThatIgnoresTheMouseHearsNothing,
                            AHiddenWindowHearsNothing, CanBeDestroyedByItsOwnContent, OutlivesItsContent,
                            MonitorsKeys, KeepsKeysForTheMonitorFromTheMomentAWindowIsShown,
                            AKeyMonitorCanEndItself);

} // namespace clipwren
