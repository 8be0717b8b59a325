#include "encoding/Watermark.h"

#include "tests/fakes/FakeCanvas.h"
#include "tests/support/TestPicture.h"

#include <gtest/gtest.h>

#include <cmath>

namespace clipwren {
namespace {

// Hands out canvases whose operations outlive them.
class RecordingCanvases : public Canvases {
public:
    std::vector<CanvasOperation> operations;
    std::vector<PixelSize> sizes;

    std::unique_ptr<BitmapCanvas> makeBitmap(PixelSize size) override {
        sizes.push_back(size);
        return std::make_unique<RecordingCanvas>(size, *this);
    }

private:
    class RecordingCanvas : public FakeCanvas {
    public:
        RecordingCanvas(PixelSize size, RecordingCanvases& owner) : FakeCanvas(size), owner(owner) {}
        ~RecordingCanvas() override {
            owner.operations.insert(owner.operations.end(), operations.begin(), operations.end());
        }

    private:
        RecordingCanvases& owner;
    };
};

WatermarkLayout layoutFor(PixelSize size) {
    return watermarkLayout(size, FakeCanvas({1, 1}).measure(watermarkText, watermarkFont(size.height)));
}

TEST(Watermark, ALowPictureGetsTheFloors) {
    const WatermarkLayout layout = layoutFor({400, 200});
    EXPECT_DOUBLE_EQ(layout.font.size, 11);
    EXPECT_DOUBLE_EQ(layout.margin, 8);
    EXPECT_DOUBLE_EQ(layout.verticalInset, 4);
    EXPECT_DOUBLE_EQ(layout.horizontalInset, 8);
}

TEST(Watermark, AHighPictureGetsProportions) {
    const WatermarkLayout layout = layoutFor({1600, 1000});
    EXPECT_DOUBLE_EQ(layout.font.size, 30);
    EXPECT_DOUBLE_EQ(layout.dotDiameter, 19.5);
    EXPECT_DOUBLE_EQ(layout.gap, 16.5);
    EXPECT_DOUBLE_EQ(layout.verticalInset, 10.5);
    EXPECT_DOUBLE_EQ(layout.horizontalInset, 19.5);
    EXPECT_DOUBLE_EQ(layout.margin, 25);
}

TEST(Watermark, TheFaceIsSemiboldAndSpaced) {
    const Font font = watermarkFont(1000);
    EXPECT_EQ(font.weight, FontWeight::semibold);
    EXPECT_DOUBLE_EQ(font.kern, 0.4);
    EXPECT_FALSE(font.monospacedDigits);
}

TEST(Watermark, ThePartsLieInThePill) {
    const WatermarkLayout layout = watermarkLayout({1600, 1000}, {200, 40});
    EXPECT_DOUBLE_EQ(layout.pill.width, 19.5 + 16.5 + 200 + 39);
    EXPECT_DOUBLE_EQ(layout.pill.height, 61);
    EXPECT_DOUBLE_EQ(layout.pill.x, 1600 - 275 - 25);
    EXPECT_DOUBLE_EQ(layout.pill.y, 25);
    EXPECT_DOUBLE_EQ(layout.dotCenter.x, 1300 + 19.5 + 9.75);
    EXPECT_DOUBLE_EQ(layout.dotCenter.y, 25 + 30.5);
    EXPECT_DOUBLE_EQ(layout.textOrigin.x, 1300 + 19.5 + 19.5 + 16.5);
    EXPECT_DOUBLE_EQ(layout.textOrigin.y, 25 + 10.5);
}

TEST(Watermark, ThePulseFollowsThePhase) {
    for (const double phase : {0.0, 0.5}) {
        EXPECT_NEAR(watermarkPulse(phase).alpha, 0.825, 1e-12);
        EXPECT_NEAR(watermarkPulse(phase).diameterFactor, 1.01, 1e-12);
    }
    EXPECT_NEAR(watermarkPulse(0.25).alpha, 1, 1e-12);
    EXPECT_NEAR(watermarkPulse(0.25).diameterFactor, 1.10, 1e-12);
    EXPECT_NEAR(watermarkPulse(0.75).alpha, 0.65, 1e-12);
    EXPECT_NEAR(watermarkPulse(0.75).diameterFactor, 0.92, 1e-12);
    EXPECT_NEAR(watermarkPulse(-0.25).alpha, watermarkPulse(0.75).alpha, 1e-12);
    EXPECT_NEAR(watermarkPulse(-0.25).diameterFactor, watermarkPulse(0.75).diameterFactor, 1e-12);
}

TEST(Watermark, IsPaintedPillFirstTextLast) {
    RecordingCanvases canvases;
    const PixelSize size{800, 450};
    ASSERT_TRUE(applyWatermark(TestPicture(size.width, size.height).image(), 0.25, canvases));
    ASSERT_EQ(canvases.operations.size(), 3u);
    const auto& [pill, dot, text] =
        std::tie(canvases.operations[0], canvases.operations[1], canvases.operations[2]);
    const WatermarkLayout layout = layoutFor(size);

    EXPECT_EQ(pill.kind, CanvasOperation::Kind::roundedRectangle);
    EXPECT_EQ(pill.color, Color::black(0.55));
    EXPECT_DOUBLE_EQ(pill.radius, layout.pill.height / 2);
    EXPECT_DOUBLE_EQ(pill.rectangles[0].width, layout.pill.width);
    EXPECT_DOUBLE_EQ(pill.rectangles[0].height, layout.pill.height);

    EXPECT_EQ(dot.kind, CanvasOperation::Kind::oval);
    EXPECT_EQ(dot.color, (Color{1, 59 / 255.0, 48 / 255.0, 1}));
    EXPECT_NEAR(dot.rectangles[0].width, layout.dotDiameter * 1.1, 1e-9);
    const Rect& pillRect = pill.rectangles[0];
    EXPECT_NEAR(dot.rectangles[0].x + dot.rectangles[0].width / 2 - pillRect.x,
                layout.dotCenter.x - layout.pill.x, 1e-9);
    EXPECT_NEAR(dot.rectangles[0].y + dot.rectangles[0].height / 2, pillRect.y + pillRect.height / 2, 1e-9);

    EXPECT_EQ(text.kind, CanvasOperation::Kind::text);
    EXPECT_EQ(text.text, "clipwren.app");
    EXPECT_EQ(text.color, Color::white());
    EXPECT_EQ(text.font, layout.font);
    EXPECT_NEAR(text.position.y - pillRect.y, layout.verticalInset, 1e-9);
}

// What painting straight onto the whole picture gives.
std::vector<Pixel> paintedWhole(TestPicture& picture, double phase) {
    FakeCanvas canvas({picture.width, picture.height});
    canvas.load(picture.view());
    const WatermarkLayout layout = layoutFor({picture.width, picture.height});
    const WatermarkPulse pulse = watermarkPulse(phase);
    canvas.fillRoundedRectangle(layout.pill, layout.pill.height / 2, Color::black(0.55));
    const double diameter = layout.dotDiameter * pulse.diameterFactor;
    canvas.fillOval(
        {layout.dotCenter.x - diameter / 2, layout.dotCenter.y - diameter / 2, diameter, diameter},
        {1, 59 / 255.0, 48 / 255.0, pulse.alpha});
    canvas.drawText(watermarkText, layout.textOrigin, layout.font, Color::white());
    const PixelView view = canvas.pixels();
    return {view.pixels, view.pixels + picture.pixels.size()};
}

std::vector<Pixel> allPixels(const Image& image) {
    std::vector<Pixel> result(static_cast<std::size_t>(image.bounds().area()));
    image.copy(image.bounds(), result.data(), image.width());
    return result;
}

TEST(Watermark, LooksAsIfPaintedOnTheWholePicture) {
    FakeCanvases canvases;
    for (const PixelSize size : {PixelSize{800, 450}, {333, 201}, {1600, 900}}) {
        TestPicture picture(size.width, size.height);
        for (std::size_t i = 0; i < picture.pixels.size(); ++i)
            picture.pixels[i] = 0xFF000000 | static_cast<Pixel>(i * 2654435761u >> 8);
        const auto stamped = applyWatermark(picture.image(), 0.1, canvases);
        ASSERT_TRUE(stamped);
        EXPECT_EQ(allPixels(*stamped), paintedWhole(picture, 0.1));
    }
}

TEST(Watermark, SharesEveryBlockOutsideTheBadgeAndLeavesTheInput) {
    FakeCanvases canvases;
    const TestPicture picture(800, 450, 0xFF808080);
    const Image image = picture.image();
    const auto stamped = applyWatermark(image, 0, canvases);
    ASSERT_TRUE(stamped);
    EXPECT_EQ(allPixels(image), picture.pixels);
    EXPECT_EQ(stamped->width(), 800);
    EXPECT_EQ(stamped->height(), 450);
    const auto differing = stamped->blocksDiffering(image);
    EXPECT_FALSE(differing.empty());
    const Rect pill = layoutFor({800, 450}).pill;
    for (const PixelRect& block : differing) {
        EXPECT_GT(block.maxX(), pill.minX());
        EXPECT_GT(block.maxY(), 450 - pill.maxY());
    }
}

TEST(Watermark, OnlyTheBadgeIsEverCopied) {
    RecordingCanvases canvases;
    applyWatermark(TestPicture(1600, 900).image(), 0, canvases);
    for (const PixelSize& size : canvases.sizes) {
        EXPECT_LT(size.width, 500);
        EXPECT_LT(size.height, 100);
    }
}

TEST(Watermark, IsClippedOnTheLeftOfANarrowPicture) {
    FakeCanvases canvases;
    TestPicture picture(40, 200, 0xFFFFFFFF);
    EXPECT_LT(layoutFor({40, 200}).pill.x, 0);
    const auto stamped = applyWatermark(picture.image(), 0.3, canvases);
    ASSERT_TRUE(stamped);
    EXPECT_EQ(allPixels(*stamped), paintedWhole(picture, 0.3));
    EXPECT_NE(allPixels(*stamped), picture.pixels);
}

TEST(Watermark, APictureOfAnySizeKeepsIt) {
    FakeCanvases canvases;
    for (const PixelSize size : {PixelSize{1, 1}, {5, 3}, {9, 9}, {3000, 8}, {8, 3000}}) {
        TestPicture picture(size.width, size.height, 0xFF555555);
        const auto stamped = applyWatermark(picture.image(), 0, canvases);
        ASSERT_TRUE(stamped);
        EXPECT_EQ(stamped->width(), size.width);
        EXPECT_EQ(stamped->height(), size.height);
        EXPECT_EQ(allPixels(*stamped), paintedWhole(picture, 0));
    }
}

TEST(Watermark, IsMissingWithoutACanvas) {
    FakeCanvases canvases;
    canvases.refuses = true;
    EXPECT_FALSE(applyWatermark(TestPicture(400, 300).image(), 0, canvases));
}

} // namespace
} // namespace clipwren
