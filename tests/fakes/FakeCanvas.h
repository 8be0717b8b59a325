#pragma once

#include "platform/Canvas.h"

#include <string>
#include <vector>

namespace clipwren {

// One painting operation as it was asked for.
struct CanvasOperation {
    enum class Kind { fill, roundedRectangle, oval, strokedRectangle, text };
    Kind kind = Kind::fill;
    std::vector<Rect> rectangles; // the path, or the one rectangle
    WindingRule rule = WindingRule::nonZero;
    double radius = 0;
    double lineWidth = 0;
    std::vector<double> dashes;
    std::string text;
    Point position; // of a text
    Font font;
    Color color;
    friend bool operator==(const CanvasOperation&, const CanvasOperation&) = default;
};

// A software canvas that really paints (shapes by sixteen samples a pixel, each character of a text as a box)
// and remembers what it was asked to paint. Every character is 0.6 of the font size wide plus kern, a text is
// 1.2 of the font size high.
class FakeCanvas : public BitmapCanvas {
public:
    explicit FakeCanvas(PixelSize size);

    std::vector<CanvasOperation> operations;

    void load(const PixelView& view) override;
    PixelView pixels() const override;

    void fill(std::span<const Rect> rectangles, WindingRule rule, const Color& color) override;
    void fillRoundedRectangle(const Rect& rect, double radius, const Color& color) override;
    void fillOval(const Rect& rect, const Color& color) override;
    void strokeRectangle(const Rect& rect, double lineWidth, std::span<const double> dashes,
                         const Color& color) override;
    Size measure(std::string_view text, const Font& font) const override;
    void drawText(std::string_view text, Point bottomLeft, const Font& font, const Color& color) override;

    // The pixel under a point, y upward.
    Pixel pixelAt(int x, int yUp) const;

private:
    template <typename Inside>
    void paint(const Rect& box, const Color& color, Inside inside);

    PixelSize size;
    std::vector<Pixel> content;
};

class FakeCanvases : public Canvases {
public:
    bool refuses = false;
    std::unique_ptr<BitmapCanvas> makeBitmap(PixelSize size) override;
};

} // namespace clipwren
