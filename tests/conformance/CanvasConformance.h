#pragma once

#include "platform/Canvas.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <thread>
#include <vector>

namespace clipwren {

// What every canvas does. `Subject` owns the maker of canvases:
//   Canvases& canvases();
template <typename Subject>
class CanvasConformance : public testing::Test {
protected:
    Subject subject;
    std::unique_ptr<BitmapCanvas> canvas = subject.canvases().makeBitmap({60, 40});

    // The pixel above a point, y upward.
    Pixel at(int x, int yUp) const {
        const PixelView view = canvas->pixels();
        return view.row(view.height - 1 - yUp)[x];
    }
    static int alphaOf(Pixel pixel) { return static_cast<int>(pixel >> 24); }
    int alphaAt(int x, int yUp) const { return alphaOf(at(x, yUp)); }

    static std::vector<Pixel> copyOf(const BitmapCanvas& canvas) {
        const PixelView view = canvas.pixels();
        std::vector<Pixel> result;
        for (int y = 0; y < view.height; ++y)
            result.insert(result.end(), view.row(y), view.row(y) + view.width);
        return result;
    }

    // The smallest rectangle, y upward, that holds everything painted.
    Rect painted() const {
        int left = 60, right = 0, bottom = 40, top = 0;
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 60; ++x) {
                if (alphaAt(x, y) == 0) continue;
                left = std::min(left, x);
                right = std::max(right, x + 1);
                bottom = std::min(bottom, y);
                top = std::max(top, y + 1);
            }
        if (right <= left) return {};
        return {double(left), double(bottom), double(right - left), double(top - bottom)};
    }
};
TYPED_TEST_SUITE_P(CanvasConformance);

TYPED_TEST_P(CanvasConformance, IsTransparentAtFirstAndHasItsSize) {
    ASSERT_TRUE(this->canvas);
    EXPECT_EQ(this->canvas->pixels().width, 60);
    EXPECT_EQ(this->canvas->pixels().height, 40);
    EXPECT_EQ(this->painted(), Rect{});
}

TYPED_TEST_P(CanvasConformance, RefusesSizesWithoutPixels) {
    EXPECT_FALSE(this->subject.canvases().makeBitmap({0, 10}));
    EXPECT_FALSE(this->subject.canvases().makeBitmap({10, 0}));
    EXPECT_FALSE(this->subject.canvases().makeBitmap({-1, -1}));
}

TYPED_TEST_P(CanvasConformance, FillsWholePixelsCrisply) {
    this->canvas->fill(std::array{Rect{10, 5, 20, 7}}, WindingRule::nonZero, {1, 0, 0, 1});
    EXPECT_EQ(this->painted(), (Rect{10, 5, 20, 7}));
    for (int y = 5; y < 12; ++y)
        for (int x = 10; x < 30; ++x)
            ASSERT_EQ(this->at(x, y), 0xFFFF0000u) << x << ' ' << y;
}

TYPED_TEST_P(CanvasConformance, EvenOddLeavesTheInnerRectangleClear) {
    this->canvas->fill(std::array{Rect{0, 0, 60, 40}, Rect{10, 20, 30, 10}}, WindingRule::evenOdd,
                       Color::black(0.35));
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 60; ++x) {
            const bool isInside = x >= 10 && x < 40 && y >= 20 && y < 30;
            ASSERT_EQ(this->at(x, y), isInside ? 0u : 0x59000000u) << x << ' ' << y;
        }
}

TYPED_TEST_P(CanvasConformance, NonZeroFillsTheOverlapOnce) {
    this->canvas->fill(std::array{Rect{0, 0, 20, 20}, Rect{10, 10, 20, 20}}, WindingRule::nonZero,
                       Color::black(0.5));
    EXPECT_NEAR(this->alphaAt(5, 5), 128, 1);
    EXPECT_NEAR(this->alphaAt(15, 15), 128, 1);
    EXPECT_NEAR(this->alphaAt(25, 25), 128, 1);
}

TYPED_TEST_P(CanvasConformance, FillsFractionsOfPixelsByTheirShare) {
    this->canvas->fill(std::array{Rect{10.5, 10, 10, 10.25}}, WindingRule::nonZero, Color::black(1));
    EXPECT_NEAR(this->alphaAt(10, 15), 128, 4);
    EXPECT_EQ(this->alphaAt(11, 15), 255);
    EXPECT_NEAR(this->alphaAt(15, 20), 64, 4);
    EXPECT_NEAR(this->alphaAt(20, 15), 128, 4);
}

TYPED_TEST_P(CanvasConformance, LaysOneOverTheOther) {
    this->canvas->fill(std::array{Rect{0, 0, 60, 40}}, WindingRule::nonZero, Color::white());
    this->canvas->fill(std::array{Rect{0, 0, 60, 40}}, WindingRule::nonZero, Color::black(0.25));
    EXPECT_EQ(this->alphaAt(3, 3), 255);
    EXPECT_NEAR(this->at(3, 3) & 0xFF, 191, 1);
}

TYPED_TEST_P(CanvasConformance, RoundsCornersOnly) {
    this->canvas->fillRoundedRectangle({10, 10, 30, 20}, 10, Color::black(1));
    EXPECT_EQ(this->painted(), (Rect{10, 10, 30, 20}));
    for (const auto& [x, y] : {std::pair{10, 10}, {39, 10}, {10, 29}, {39, 29}})
        EXPECT_EQ(this->alphaAt(x, y), 0) << x << ' ' << y;
    EXPECT_EQ(this->alphaAt(25, 20), 255);
    EXPECT_EQ(this->alphaAt(25, 10), 255);
}

TYPED_TEST_P(CanvasConformance, FillsOvals) {
    this->canvas->fillOval({20, 10, 20, 20}, {1, 0, 0, 1});
    EXPECT_EQ(this->painted(), (Rect{20, 10, 20, 20}));
    EXPECT_EQ(this->at(30, 20), 0xFFFF0000u);
    EXPECT_EQ(this->alphaAt(21, 11), 0);
    EXPECT_EQ(this->alphaAt(38, 28), 0);
}

TYPED_TEST_P(CanvasConformance, CentresTheStrokeOnTheOutline) {
    this->canvas->strokeRectangle({10, 10, 30, 20}, 2, {}, Color::black(1));
    EXPECT_EQ(this->painted(), (Rect{9, 9, 32, 22}));
    EXPECT_EQ(this->alphaAt(9, 20), 255);
    EXPECT_EQ(this->alphaAt(10, 20), 255);
    EXPECT_EQ(this->alphaAt(11, 20), 0);
    EXPECT_EQ(this->alphaAt(25, 30), 255);
    EXPECT_EQ(this->alphaAt(25, 28), 0);
}

TYPED_TEST_P(CanvasConformance, DashesBeginAtTheOriginAlongTheBottom) {
    this->canvas->strokeRectangle({10, 10, 30, 20}, 2, std::array{4.0, 2.0}, Color::black(1));
    for (int x = 11; x < 38; ++x)
        EXPECT_EQ(this->alphaAt(x, 10), (x - 10) % 6 < 4 ? 255 : 0) << x;
    // 30 along the bottom is five whole periods: the right side begins a dash.
    for (int y = 11; y < 28; ++y)
        EXPECT_EQ(this->alphaAt(40, y), (y - 10) % 6 < 4 ? 255 : 0) << y;
}

TYPED_TEST_P(CanvasConformance, PaintsTextInsideItsBox) {
    const Font font{.size = 12, .weight = FontWeight::semibold};
    const Size size = this->canvas->measure("Hx4", font);
    EXPECT_GT(size.width, 12);
    EXPECT_LT(size.width, 40);
    EXPECT_GE(size.height, 12);
    EXPECT_LT(size.height, 20);
    this->canvas->drawText("Hx4", {10, 10}, font, Color::white());
    const Rect painted = this->painted();
    EXPECT_GT(painted.width, size.width * 0.6);
    EXPECT_GT(painted.height, 6);
    EXPECT_GE(painted.minX(), 9);
    EXPECT_GE(painted.minY(), 10);
    EXPECT_LE(painted.maxX(), 10 + size.width + 1);
    EXPECT_LE(painted.maxY(), 10 + size.height);
}

TYPED_TEST_P(CanvasConformance, MeasuresKernAfterEveryCharacter) {
    const Size plain = this->canvas->measure("clipwren", {.size = 12});
    const Size kerned = this->canvas->measure("clipwren", {.size = 12, .kern = 0.5});
    EXPECT_NEAR(kerned.width - plain.width, 8 * 0.5, 1e-6);
    EXPECT_EQ(kerned.height, plain.height);
}

TYPED_TEST_P(CanvasConformance, TakesFractionalFontSizes) {
    const Size whole = this->canvas->measure("abc 320", {.size = 20});
    const Size more = this->canvas->measure("abc 320", {.size = 20.5});
    EXPECT_NEAR(more.width / whole.width, 1.025, 0.004);
    EXPECT_NEAR(more.height / whole.height, 1.025, 0.004);
}

TYPED_TEST_P(CanvasConformance, MonospacedDigitsAreEquallyWide) {
    const Font font{.size = 11, .weight = FontWeight::medium, .monospacedDigits = true};
    const double width = this->canvas->measure("1111", font).width;
    for (const char* digits : {"0000", "4747", "8888", "1970"})
        EXPECT_NEAR(this->canvas->measure(digits, font).width, width, 1e-6) << digits;
    EXPECT_GT(this->canvas->measure("320 × 240", font).width, width);
}

TYPED_TEST_P(CanvasConformance, AnEmptyTextPaintsNothing) {
    EXPECT_EQ(this->canvas->measure("", {.size = 12}).width, 0);
    this->canvas->drawText("", {5, 5}, {.size = 12}, Color::white());
    EXPECT_EQ(this->painted(), Rect{});
}

TYPED_TEST_P(CanvasConformance, LoadReplacesEverything) {
    this->canvas->fill(std::array{Rect{0, 0, 60, 40}}, WindingRule::nonZero, Color::white());
    std::vector<Pixel> source(64 * 40);
    for (std::size_t i = 0; i < source.size(); ++i)
        source[i] = i % 3 == 0 ? 0u : 0x80000000u | static_cast<Pixel>(i % 0x80);
    this->canvas->load({source.data(), 60, 40, 64});
    const PixelView view = this->canvas->pixels();
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 60; ++x)
            ASSERT_EQ(view.row(y)[x], source[static_cast<std::size_t>(y * 64 + x)]);
    // And painting goes on from there.
    this->canvas->fill(std::array{Rect{0, 0, 1, 1}}, WindingRule::nonZero, {0, 1, 0, 1});
    EXPECT_EQ(this->at(0, 0), 0xFF00FF00u);
}

TYPED_TEST_P(CanvasConformance, WorksAlikeOnAnotherThread) {
    const auto paint = [](BitmapCanvas& canvas) {
        canvas.fillRoundedRectangle({3, 3, 50, 20}, 10, Color::black(0.55));
        canvas.fillOval({7.3, 8.1, 8.7, 8.7}, {1, 0.2, 0.1, 0.8});
        canvas.drawText("wren 40", {20, 6}, {.size = 10.5, .weight = FontWeight::semibold, .kern = 0.4},
                        Color::white());
    };
    paint(*this->canvas);
    std::vector<Pixel> elsewhere;
    std::thread([&] {
        const auto other = this->subject.canvases().makeBitmap({60, 40});
        paint(*other);
        elsewhere = this->copyOf(*other);
    }).join();
    EXPECT_EQ(this->copyOf(*this->canvas), elsewhere);
}

REGISTER_TYPED_TEST_SUITE_P(CanvasConformance, IsTransparentAtFirstAndHasItsSize, RefusesSizesWithoutPixels,
                            FillsWholePixelsCrisply, EvenOddLeavesTheInnerRectangleClear,
                            NonZeroFillsTheOverlapOnce, FillsFractionsOfPixelsByTheirShare,
                            LaysOneOverTheOther, RoundsCornersOnly, FillsOvals, CentresTheStrokeOnTheOutline,
                            DashesBeginAtTheOriginAlongTheBottom, PaintsTextInsideItsBox,
                            MeasuresKernAfterEveryCharacter, TakesFractionalFontSizes,
                            MonospacedDigitsAreEquallyWide, AnEmptyTextPaintsNothing, LoadReplacesEverything,
                            WorksAlikeOnAnotherThread);

} // namespace clipwren
