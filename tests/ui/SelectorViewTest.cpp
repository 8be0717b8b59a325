#include "ui/SelectorView.h"

#include "tests/fakes/FakeWindows.h"

#include <gtest/gtest.h>

namespace clipwren {
namespace {

using Kind = CanvasOperation::Kind;

class SelectorViewTest : public testing::Test {
protected:
    const Rect bounds{0, 0, 800, 600};
    SelectorView view;
    std::vector<Rect> reported;

    void SetUp() override {
        view.onComplete = [this](const Rect& rect) { reported.push_back(rect); };
    }
    std::vector<CanvasOperation> painted() {
        FakeCanvas canvas({800, 600});
        view.draw(canvas, bounds);
        return canvas.operations;
    }
    void dragging(Point from, Point to) {
        view.mouseDown(from);
        view.mouseDragged(to);
    }
    std::string labelText() {
        for (const auto& operation : painted())
            if (operation.kind == Kind::text) return operation.text;
        return "";
    }
};

TEST_F(SelectorViewTest, WithoutASelectionEverythingIsDimmed) {
    const auto operations = painted();
    ASSERT_EQ(operations.size(), 1u);
    EXPECT_EQ(operations[0].kind, Kind::fill);
    EXPECT_EQ(operations[0].rectangles, std::vector{bounds});
    EXPECT_EQ(operations[0].color, Color::black(0.35));
}

TEST_F(SelectorViewTest, ADragIsNormalisedWhicheverWayItGoes) {
    view.mouseDown({100, 100});
    view.mouseDragged({40, 300});
    view.mouseUp({700, 5}); // where the button is released does not matter
    EXPECT_EQ(reported, (std::vector<Rect>{{40, 100, 60, 200}}));
}

TEST_F(SelectorViewTest, ADragPastTheEdgeIsNotClamped) {
    dragging({100, 100}, {-30, 900});
    view.mouseUp({});
    EXPECT_EQ(reported, (std::vector<Rect>{{-30, 100, 130, 800}}));
}

TEST_F(SelectorViewTest, TheSelectionIsClearWithABorderAndALabelUnderIt) {
    dragging({100, 100}, {420, 340});
    const auto operations = painted();
    ASSERT_EQ(operations.size(), 4u);
    const Rect selection{100, 100, 320, 240};
    EXPECT_EQ(operations[0], (CanvasOperation{.kind = Kind::fill,
                                              .rectangles = {bounds, selection},
                                              .rule = WindingRule::evenOdd,
                                              .color = Color::black(0.35)}));
    EXPECT_EQ(operations[1], (CanvasOperation{.kind = Kind::strokedRectangle,
                                              .rectangles = {selection},
                                              .lineWidth = 1,
                                              .dashes = {4, 2},
                                              .color = Color::white()}));
    const Font font{.size = 11, .weight = FontWeight::medium, .monospacedDigits = true};
    const Size text = FakeCanvas({1, 1}).measure("320 × 240", font);
    const Rect box{100, 100 - text.height - 6, text.width + 10, text.height + 4};
    EXPECT_EQ(
        operations[2],
        (CanvasOperation{
            .kind = Kind::roundedRectangle, .rectangles = {box}, .radius = 3, .color = Color::black(0.75)}));
    EXPECT_EQ(operations[3], (CanvasOperation{.kind = Kind::text,
                                              .text = "320 × 240",
                                              .position = {box.x + 5, box.y + 2},
                                              .font = font,
                                              .color = Color::white()}));
}

TEST_F(SelectorViewTest, TheLabelRoundsHalvesAwayFromZero) {
    dragging({0, 100}, {100.5, 199.5});
    EXPECT_EQ(labelText(), "101 × 100");
}

TEST_F(SelectorViewTest, NearTheBottomTheLabelStandsAtTheBottom) {
    dragging({100, 10}, {300, 200});
    for (const auto& operation : painted())
        if (operation.kind == Kind::roundedRectangle) {
            EXPECT_EQ(operation.rectangles[0].y, 0);
            EXPECT_EQ(operation.rectangles[0].x, 100);
        }
}

TEST_F(SelectorViewTest, TheSmallestSelectionIsEightByEight) {
    dragging({10, 10}, {18, 18});
    view.mouseUp({});
    EXPECT_EQ(reported, (std::vector<Rect>{{10, 10, 8, 8}}));
}

TEST_F(SelectorViewTest, ATooSmallDragGoesBackToFullDimming) {
    for (const Point to : {Point{17.9, 110}, Point{110, 17.9}}) {
        dragging({10, 10}, to);
        view.mouseUp({});
        EXPECT_TRUE(reported.empty());
        EXPECT_EQ(painted().size(), 1u);
    }
}

TEST_F(SelectorViewTest, AClickDoesNothing) {
    view.mouseDown({50, 50});
    view.mouseUp({50, 50});
    EXPECT_TRUE(reported.empty());
    EXPECT_EQ(painted().size(), 1u);
}

TEST_F(SelectorViewTest, WithoutAPressNeitherDragNorReleaseCounts) {
    view.mouseDragged({50, 50});
    view.mouseUp({90, 90});
    EXPECT_TRUE(reported.empty());
    EXPECT_EQ(painted().size(), 1u);
}

} // namespace
} // namespace clipwren
