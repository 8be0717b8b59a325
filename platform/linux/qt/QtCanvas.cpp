#include "platform/linux/qt/QtCanvas.h"

#include <QFontDatabase>
#include <QGlyphRun>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QRawFont>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numeric>

namespace clipwren {

namespace {

QColor toQt(const Color& color) {
    const auto component = [](double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); };
    return QColor::fromRgbF(component(color.red), component(color.green), component(color.blue),
                            component(color.alpha));
}

QRectF flipped(const Rect& rect, double height) {
    return {rect.x, height - rect.maxY(), rect.width, rect.height};
}

// A text as glyphs and where they stand, from the left end of its baseline.
struct TextBox {
    QRawFont font;
    QList<quint32> glyphs;
    QList<QPointF> positions;
    double width = 0;
    double height() const { return font.ascent() + font.descent(); }
};

// A QFont rounds its size and its letter spacing; a raw font does neither.
QRawFont rawFont(const Font& font, const QFont& face) {
    QFont request = face;
    request.setPixelSize(std::max(static_cast<int>(std::lround(font.size)), 1));
    request.setWeight(font.weight == FontWeight::semibold ? QFont::DemiBold
                      : font.weight == FontWeight::medium ? QFont::Medium
                                                          : QFont::Normal);
    request.setHintingPreference(QFont::PreferNoHinting);
    request.setStyleStrategy(QFont::StyleStrategy(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
    QRawFont result = QRawFont::fromFont(request);
    if (result.pixelSize() != font.size) result.setPixelSize(font.size);
    return result;
}

TextBox layOut(std::string_view utf8, const Font& font, const QFont& face) {
    const QString text = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
    TextBox box{.font = rawFont(font, face), .glyphs = {}, .positions = {}};
    box.glyphs = box.font.glyphIndexesForString(text);
    const auto advances = [&](const QList<quint32>& glyphs) {
        return box.font.advancesForGlyphIndexes(glyphs, QRawFont::UseDesignMetrics);
    };
    const QList<QPointF> ownAdvances = advances(box.glyphs);

    QList<quint32> digits;
    double digitWidth = 0;
    if (font.monospacedDigits) {
        digits = box.font.glyphIndexesForString(QStringLiteral("0123456789"));
        for (const QPointF& advance : advances(digits))
            digitWidth = std::max(digitWidth, advance.x());
    }
    for (qsizetype i = 0; i < box.glyphs.size(); ++i) {
        const double advance = ownAdvances[i].x();
        // A digit stands in the middle of a cell as wide as the widest.
        const double cell = digits.contains(box.glyphs[i]) ? digitWidth : advance;
        box.positions.append({box.width + (cell - advance) / 2, 0});
        box.width += cell + font.kern;
    }
    return box;
}

constexpr double mostDashes = 1e6;

QPainterPath outline(const QRectF& box, double lineWidth) {
    const double half = lineWidth / 2;
    QPainterPath path;
    path.setFillRule(Qt::OddEvenFill);
    path.addRect(box.adjusted(-half, -half, half, half));
    if (const QRectF inner = box.adjusted(half, half, -half, -half); inner.width() > 0 && inner.height() > 0)
        path.addRect(inner);
    return path;
}

// The part of a rectangle's outline between two distances from its bottom left corner, counter-clockwise, in
// pieces along the sides that meet in full corners; only what can be seen.
void addDash(QPainterPath& path, const QRectF& box, double half, double from, double to, const QRectF& seen) {
    const auto add = [&](const QRectF& piece) {
        if (piece.intersects(seen)) path.addRect(piece);
    };
    const std::array lengths{box.width(), box.height(), box.width(), box.height()};
    double sideStart = 0;
    for (std::size_t side = 0; side < lengths.size(); ++side) {
        const double length = lengths[side];
        // Along this side; around the corner where the dash goes on beyond it.
        const double a = from < sideStart && side > 0 ? -half : std::max(from - sideStart, 0.0);
        const double b =
            to > sideStart + length && side < 3 ? length + half : std::min(to - sideStart, length);
        if (from < sideStart + length && to > sideStart) {
            switch (side) {
            case 0: add({box.left() + a, box.bottom() - half, b - a, 2 * half}); break;
            case 1: add({box.right() - half, box.bottom() - b, 2 * half, b - a}); break;
            case 2: add({box.right() - b, box.top() - half, b - a, 2 * half}); break;
            default: add({box.left() - half, box.top() + a, 2 * half, b - a}); break;
            }
        }
        sideStart += length;
    }
}

// Qt's own dashes lose their phase where a small image cuts them.
QPainterPath dashedOutline(const QRectF& box, double lineWidth, std::span<const double> dashes,
                           const QRectF& seen) {
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    const double end = 2 * (box.width() + box.height());
    double at = 0;
    for (std::size_t i = 0; at < end; ++i) {
        const double next = std::min(at + dashes[i % dashes.size()], end);
        if (i % 2 == 0) addDash(path, box, lineWidth / 2, at, next, seen);
        at = next;
    }
    return path;
}

class QtBitmapCanvas final : public BitmapCanvas {
public:
    QtBitmapCanvas(QImage canvasImage, const QFont& face)
        : image(std::move(canvasImage)),
          painter(&image),
          canvas(painter, image.height(), face) {}

    void load(const PixelView& view) override {
        for (int y = 0; y < image.height(); ++y)
            std::memcpy(image.scanLine(y), view.row(y),
                        static_cast<std::size_t>(image.width()) * sizeof(Pixel));
    }
    PixelView pixels() const override {
        return {reinterpret_cast<const Pixel*>(image.constBits()), image.width(), image.height(),
                image.bytesPerLine() / static_cast<std::ptrdiff_t>(sizeof(Pixel))};
    }

    void fill(std::span<const Rect> rectangles, WindingRule rule, const Color& color) override {
        canvas.fill(rectangles, rule, color);
    }
    void fillRoundedRectangle(const Rect& rect, double radius, const Color& color) override {
        canvas.fillRoundedRectangle(rect, radius, color);
    }
    void fillOval(const Rect& rect, const Color& color) override { canvas.fillOval(rect, color); }
    void strokeRectangle(const Rect& rect, double lineWidth, std::span<const double> dashes,
                         const Color& color) override {
        canvas.strokeRectangle(rect, lineWidth, dashes, color);
    }
    Size measure(std::string_view text, const Font& font) const override {
        return canvas.measure(text, font);
    }
    void drawText(std::string_view text, Point bottomLeft, const Font& font, const Color& color) override {
        canvas.drawText(text, bottomLeft, font, color);
    }

private:
    QImage image;
    QPainter painter;
    QtCanvas canvas;
};

} // namespace

Size measureText(std::string_view text, const Font& font, const QFont& face) {
    const TextBox box = layOut(text, font, face);
    return {box.width, box.height()};
}

QtCanvas::QtCanvas(QPainter& painter, double height, const QFont& face)
    : painter(painter),
      height(height),
      face(face) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
}

void QtCanvas::fill(std::span<const Rect> rectangles, WindingRule rule, const Color& color) {
    QPainterPath path;
    path.setFillRule(rule == WindingRule::evenOdd ? Qt::OddEvenFill : Qt::WindingFill);
    for (const Rect& rect : rectangles)
        path.addRect(flipped(rect, height));
    painter.fillPath(path, toQt(color));
}

void QtCanvas::fillRoundedRectangle(const Rect& rect, double radius, const Color& color) {
    QPainterPath path;
    path.addRoundedRect(flipped(rect, height), radius, radius);
    painter.fillPath(path, toQt(color));
}

void QtCanvas::fillOval(const Rect& rect, const Color& color) {
    QPainterPath path;
    path.addEllipse(flipped(rect, height));
    painter.fillPath(path, toQt(color));
}

void QtCanvas::strokeRectangle(const Rect& rect, double lineWidth, std::span<const double> dashes,
                               const Color& color) {
    if (lineWidth <= 0) return;
    const QRectF box = flipped(rect, height);
    const double period = std::accumulate(dashes.begin(), dashes.end(), 0.0);
    const bool isSolid = period <= 0 || 2 * (rect.width + rect.height) / period > mostDashes;
    painter.fillPath(isSolid ? outline(box, lineWidth) : dashedOutline(box, lineWidth, dashes, seen()),
                     toQt(color));
}

// What of the canvas lies on the painter's image, generously.
QRectF QtCanvas::seen() const {
    return painter.worldTransform().inverted().mapRect(QRectF(painter.viewport()).adjusted(-1, -1, 1, 1));
}

Size QtCanvas::measure(std::string_view text, const Font& font) const {
    return measureText(text, font, face);
}

void QtCanvas::drawText(std::string_view text, Point bottomLeft, const Font& font, const Color& color) {
    const TextBox box = layOut(text, font, face);
    // Letters may hang over the box.
    const double overhang = font.size / 2;
    const QRectF place(bottomLeft.x, height - bottomLeft.y - box.height(), box.width, box.height());
    if (!place.adjusted(-overhang, -overhang, overhang, overhang).intersects(seen())) return;
    QGlyphRun run;
    run.setRawFont(box.font);
    run.setGlyphIndexes(box.glyphs);
    run.setPositions(box.positions);
    painter.setPen(toQt(color));
    painter.drawGlyphRun({bottomLeft.x, height - bottomLeft.y - box.font.descent()}, run);
}

QtCanvases::QtCanvases() : face(QFontDatabase::systemFont(QFontDatabase::GeneralFont)) {}

std::unique_ptr<BitmapCanvas> QtCanvases::makeBitmap(PixelSize size) {
    QImage image(size.width, size.height, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) return nullptr;
    image.fill(0);
    return std::make_unique<QtBitmapCanvas>(std::move(image), face);
}

} // namespace clipwren
