#pragma once

#include "platform/Canvas.h"

#include <QFont>
#include <QRegion>

#include <optional>
#include <string>
#include <variant>
#include <vector>

class QPainter;

namespace clipwren {

// A canvas that remembers what it was asked to paint, to paint it as often and in such parts as needed, and
// to tell where two paintings differ. So a window needs no picture of itself, and a change costs what
// changed.
class CanvasRecording final : public Canvas {
public:
    explicit CanvasRecording(const QFont& face) : face(face) {}

    // Paints everything, as QtCanvas does.
    void replay(QPainter& painter, double height) const;

    // The colour that painting on a transparent canvas gives all of `bounds` outside `exempt`; none when
    // there is more than one, or when this is not seen at once.
    std::optional<Color> uniformColor(const Rect& bounds, const std::optional<Rect>& exempt) const;

    // Where the two may come out different, in pixels from the top left, on canvases `height` units high with
    // `scale` pixels a unit. Never too small; exact to the pixel for rectangles.
    static QRegion difference(const CanvasRecording& one, const CanvasRecording& other, double height,
                              double scale);

    void fill(std::span<const Rect> rectangles, WindingRule rule, const Color& color) override;
    void fillRoundedRectangle(const Rect& rect, double radius, const Color& color) override;
    void fillOval(const Rect& rect, const Color& color) override;
    void strokeRectangle(const Rect& rect, double lineWidth, std::span<const double> dashes,
                         const Color& color) override;
    Size measure(std::string_view text, const Font& font) const override;
    void drawText(std::string_view text, Point bottomLeft, const Font& font, const Color& color) override;

private:
    struct Fill {
        std::vector<Rect> rectangles;
        WindingRule rule;
        Color color;
        friend bool operator==(const Fill&, const Fill&) = default;
    };
    struct RoundedRectangle {
        Rect rect;
        double radius;
        Color color;
        friend bool operator==(const RoundedRectangle&, const RoundedRectangle&) = default;
    };
    struct Oval {
        Rect rect;
        Color color;
        friend bool operator==(const Oval&, const Oval&) = default;
    };
    struct Stroke {
        Rect rect;
        double lineWidth;
        std::vector<double> dashes;
        Color color;
        friend bool operator==(const Stroke&, const Stroke&) = default;
    };
    struct Text {
        std::string text;
        Point bottomLeft;
        Size size;
        Font font;
        Color color;
        friend bool operator==(const Text&, const Text&) = default;
    };
    using Operation = std::variant<Fill, RoundedRectangle, Oval, Stroke, Text>;
    class Extent;

    QFont face;
    std::vector<Operation> operations;
};

} // namespace clipwren
