#include "platform/linux/qt/QtCanvas.h"
#include "tests/conformance/CanvasConformance.h"

#include <QPainter>

namespace clipwren {

namespace {

struct QtSubject {
    QtCanvases qtCanvases;
    Canvases& canvases() { return qtCanvases; }
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, CanvasConformance, QtSubject);

TEST(QtCanvas, SmoothsTextInGrey) {
    QtCanvases canvases;
    const auto canvas = canvases.makeBitmap({120, 30});
    canvas->fill(std::array{Rect{0, 0, 120, 30}}, WindingRule::nonZero, Color::white());
    canvas->drawText("clipwren.app 640", {4, 4}, {.size = 13, .weight = FontWeight::semibold},
                     Color::black(1));
    const PixelView view = canvas->pixels();
    int shades = 0;
    for (int y = 0; y < view.height; ++y)
        for (int x = 0; x < view.width; ++x) {
            const Pixel pixel = view.row(y)[x];
            ASSERT_EQ(pixel & 0xFF, (pixel >> 8) & 0xFF);
            ASSERT_EQ(pixel & 0xFF, (pixel >> 16) & 0xFF);
            shades += pixel != 0xFFFFFFFFu && pixel != 0xFF000000u ? 1 : 0;
        }
    EXPECT_GT(shades, 20);
}

TEST(QtCanvas, FollowsTheScaleOfItsPainter) {
    QImage image(80, 60, QImage::Format_ARGB32_Premultiplied);
    image.fill(0);
    QPainter painter(&image);
    painter.scale(2, 2);
    QtCanvas canvas(painter, 30, QFont());
    canvas.fill(std::array{Rect{5, 2, 10, 4}}, WindingRule::nonZero, Color::black(1));
    painter.end();
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 80; ++x) {
            const bool isInside = x >= 10 && x < 30 && y >= 48 && y < 56;
            ASSERT_EQ(qAlpha(image.pixel(x, y)), isInside ? 255 : 0) << x << ' ' << y;
        }
}

} // namespace clipwren
