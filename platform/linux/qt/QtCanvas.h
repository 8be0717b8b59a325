#pragma once

#include "platform/Canvas.h"

#include <QFont>
#include <QRectF>

class QPainter;

namespace clipwren {

// The size of a text's typographic box: its advance, and ascent plus descent. `face` gives the family. Any
// thread, as long as the QGuiApplication lives.
Size measureText(std::string_view text, const Font& font, const QFont& face);

// Paints through a QPainter that somebody else has begun on an image and keeps going.
// The painter's transformation stays in force, so a canvas may be scaled and moved; one unit of the canvas is
// one of the painter's, and `height` of them are the canvas's height. Text is smoothed in grey, unhinted.
class QtCanvas : public Canvas {
public:
    QtCanvas(QPainter& painter, double height, const QFont& face);

    void fill(std::span<const Rect> rectangles, WindingRule rule, const Color& color) override;
    void fillRoundedRectangle(const Rect& rect, double radius, const Color& color) override;
    void fillOval(const Rect& rect, const Color& color) override;
    void strokeRectangle(const Rect& rect, double lineWidth, std::span<const double> dashes,
                         const Color& color) override;
    Size measure(std::string_view text, const Font& font) const override;
    void drawText(std::string_view text, Point bottomLeft, const Font& font, const Color& color) override;

private:
    QRectF seen() const;

    QPainter& painter;
    double height;
    QFont face;
};

// Canvases on images, with the desktop's general font.
class QtCanvases final : public Canvases {
public:
    // Main thread, once the QGuiApplication exists.
    QtCanvases();

    std::unique_ptr<BitmapCanvas> makeBitmap(PixelSize size) override;

private:
    const QFont face;
};

} // namespace clipwren
