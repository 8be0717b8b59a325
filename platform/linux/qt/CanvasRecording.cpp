#include "platform/linux/qt/CanvasRecording.h"

#include "platform/linux/qt/QtCanvas.h"

#include <algorithm>
#include <cmath>

namespace clipwren {

namespace {

template <typename... Functions>
struct Overloaded : Functions... {
    using Functions::operator()...;
};
template <typename... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

Rect grown(const Rect& rect, double by) {
    return {rect.x - by, rect.y - by, rect.width + 2 * by, rect.height + 2 * by};
}

bool contains(const Rect& outer, const Rect& inner) {
    return outer.minX() <= inner.minX() && outer.minY() <= inner.minY() && outer.maxX() >= inner.maxX() &&
           outer.maxY() >= inner.maxY();
}

} // namespace

// Which pixels operations may touch.
class CanvasRecording::Extent {
public:
    Extent(double height, double scale) : height(height), scale(scale) {}

    QRegion of(const Operation& operation) const {
        return std::visit(
            Overloaded{[&](const Fill& fill) {
                           QRegion region;
                           for (const Rect& rect : fill.rectangles)
                               region += touching(rect);
                           return region;
                       },
                       [&](const RoundedRectangle& shape) { return QRegion(touching(shape.rect)); },
                       [&](const Oval& oval) { return QRegion(touching(oval.rect)); },
                       [&](const Stroke& stroke) { return outline(stroke.rect, stroke.lineWidth / 2); },
                       // Letters may hang over the box.
                       [&](const Text& text) {
                           return QRegion(touching(grown(
                               {text.bottomLeft.x, text.bottomLeft.y, text.size.width, text.size.height},
                               text.font.size / 2)));
                       }},
            operation);
    }

    // Where two different operations at the same place of the order may differ.
    QRegion between(const Operation& one, const Operation& other) const {
        const Fill* first = std::get_if<Fill>(&one);
        const Fill* second = std::get_if<Fill>(&other);
        if (first && second && first->color == second->color && first->rectangles.size() <= 2)
            if (const auto region = betweenFills(*first, *second)) return *region;
        return of(one) + of(other);
    }

private:
    // Two fills of which at most one rectangle differs, as during a drag: a pixel's parity changes only where
    // it lies in just one of the two, and on their edges. None for other pairs.
    std::optional<QRegion> betweenFills(const Fill& one, const Fill& other) const {
        if (one.rule != WindingRule::evenOdd || other.rule != WindingRule::evenOdd) return std::nullopt;
        std::vector<Rect> onlyOne, onlyOther;
        const auto keepUnknown = [](const std::vector<Rect>& from, const std::vector<Rect>& known,
                                    std::vector<Rect>& into) {
            std::copy_if(from.begin(), from.end(), std::back_inserter(into), [&](const Rect& rect) {
                return std::find(known.begin(), known.end(), rect) == known.end();
            });
        };
        keepUnknown(one.rectangles, other.rectangles, onlyOne);
        keepUnknown(other.rectangles, one.rectangles, onlyOther);
        if (onlyOne.size() > 1 || onlyOther.size() > 1 ||
            one.rectangles.size() - onlyOne.size() != other.rectangles.size() - onlyOther.size())
            return std::nullopt;
        QRegion region, edges;
        for (const auto* rects : {&onlyOne, &onlyOther})
            for (const Rect& rect : *rects) {
                region = region.xored(touching(rect));
                edges += outline(rect, 0);
            }
        return region + edges;
    }

    QRect touching(const Rect& rect) const {
        // Half a pixel more, because smoothing and glyphs are placed with small errors.
        constexpr double slack = 0.5;
        const double left = std::floor(rect.minX() * scale - slack);
        const double top = std::floor((height - rect.maxY()) * scale - slack);
        const double right = std::ceil(rect.maxX() * scale + slack);
        const double bottom = std::ceil((height - rect.minY()) * scale + slack);
        return {QPoint(limited(left), limited(top)), QPoint(limited(right) - 1, limited(bottom) - 1)};
    }

    QRegion outline(const Rect& rect, double halfWidth) const {
        const QRegion outer = touching(grown(rect, halfWidth));
        // One pixel less on each side is surely inside.
        const Rect inner = grown(rect, -halfWidth - 3 / scale);
        return inner.width > 0 && inner.height > 0 ? outer - QRegion(touching(inner)) : outer;
    }

    static int limited(double value) { return static_cast<int>(std::clamp(value, -1e6, 1e6)); }

    double height;
    double scale;
};

void CanvasRecording::replay(QPainter& painter, double height) const {
    QtCanvas canvas(painter, height, face);
    for (const Operation& operation : operations)
        std::visit(Overloaded{[&](const Fill& fill) { canvas.fill(fill.rectangles, fill.rule, fill.color); },
                              [&](const RoundedRectangle& shape) {
                                  canvas.fillRoundedRectangle(shape.rect, shape.radius, shape.color);
                              },
                              [&](const Oval& oval) { canvas.fillOval(oval.rect, oval.color); },
                              [&](const Stroke& stroke) {
                                  canvas.strokeRectangle(stroke.rect, stroke.lineWidth, stroke.dashes,
                                                         stroke.color);
                              },
                              [&](const Text& text) {
                                  canvas.drawText(text.text, text.bottomLeft, text.font, text.color);
                              }},
                   operation);
}

std::optional<Color> CanvasRecording::uniformColor(const Rect& bounds,
                                                   const std::optional<Rect>& exempt) const {
    if (operations.size() != 1) return std::nullopt;
    const Fill* fill = std::get_if<Fill>(&operations.front());
    if (!fill || fill->rectangles.empty() || !contains(fill->rectangles.front(), bounds)) return std::nullopt;
    for (std::size_t i = 1; i < fill->rectangles.size(); ++i)
        if (!exempt || !contains(*exempt, fill->rectangles[i])) return std::nullopt;
    return fill->color;
}

QRegion CanvasRecording::difference(const CanvasRecording& one, const CanvasRecording& other, double height,
                                    double scale) {
    const Extent extent(height, scale);
    const auto& shorter = one.operations.size() < other.operations.size() ? one : other;
    const auto& longer = &shorter == &one ? other : one;
    QRegion region;
    for (std::size_t i = 0; i < shorter.operations.size(); ++i)
        if (one.operations[i] != other.operations[i])
            region += extent.between(one.operations[i], other.operations[i]);
    for (std::size_t i = shorter.operations.size(); i < longer.operations.size(); ++i)
        region += extent.of(longer.operations[i]);
    return region;
}

void CanvasRecording::fill(std::span<const Rect> rectangles, WindingRule rule, const Color& color) {
    // With one rectangle both rules say the same.
    operations.emplace_back(Fill{
        {rectangles.begin(), rectangles.end()}, rectangles.size() == 1 ? WindingRule::evenOdd : rule, color});
}

void CanvasRecording::fillRoundedRectangle(const Rect& rect, double radius, const Color& color) {
    operations.emplace_back(RoundedRectangle{rect, radius, color});
}

void CanvasRecording::fillOval(const Rect& rect, const Color& color) {
    operations.emplace_back(Oval{rect, color});
}

void CanvasRecording::strokeRectangle(const Rect& rect, double lineWidth, std::span<const double> dashes,
                                      const Color& color) {
    operations.emplace_back(Stroke{rect, lineWidth, {dashes.begin(), dashes.end()}, color});
}

Size CanvasRecording::measure(std::string_view text, const Font& font) const {
    return measureText(text, font, face);
}

void CanvasRecording::drawText(std::string_view text, Point bottomLeft, const Font& font,
                               const Color& color) {
    operations.emplace_back(Text{std::string(text), bottomLeft, measure(text, font), font, color});
}

} // namespace clipwren
