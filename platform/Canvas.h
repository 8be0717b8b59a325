#pragma once

#include "base/Geometry.h"
#include "base/Image.h"

#include <memory>
#include <span>
#include <string_view>

namespace clipwren {

// Components from 0 to 1, not premultiplied, sRGB.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    friend bool operator==(const Color&, const Color&) = default;

    static constexpr Color black(double alpha) { return {0, 0, 0, alpha}; }
    static constexpr Color white() { return {1, 1, 1, 1}; }
};

enum class WindingRule { nonZero = 0, evenOdd = 1 };

enum class FontWeight { regular, medium, semibold };

// The user's sans-serif interface face at `size` units of the canvas.
struct Font {
    double size = 12;
    FontWeight weight = FontWeight::regular;
    bool monospacedDigits = false; // all digits equally wide
    double kern = 0;               // extra room after each character, in units of the canvas
    friend bool operator==(const Font&, const Font&) = default;
};

// Something to paint on with anti-aliasing, every operation laid over what is there (source-over).
// The origin is the bottom left corner, y grows upward. A canvas is used by one thread at a time.
class Canvas {
public:
    virtual ~Canvas() = default;

    // Fills the path made of the rectangles' outlines.
    virtual void fill(std::span<const Rect> rectangles, WindingRule rule, const Color& color) = 0;
    virtual void fillRoundedRectangle(const Rect& rect, double radius, const Color& color) = 0;
    virtual void fillOval(const Rect& rect, const Color& color) = 0;

    // Strokes the outline, the line centred on it. Dash lengths alternate on and off, from phase 0 at the
    // rectangle's origin, in units of the canvas.
    virtual void strokeRectangle(const Rect& rect, double lineWidth, std::span<const double> dashes,
                                 const Color& color) = 0;

    // The size of the UTF-8 text's typographic box.
    virtual Size measure(std::string_view text, const Font& font) const = 0;
    // Draws the text with the bottom left corner of its typographic box there.
    virtual void drawText(std::string_view text, Point bottomLeft, const Font& font, const Color& color) = 0;
};

// A canvas on pixels of its own, one unit a pixel, at first wholly transparent.
class BitmapCanvas : public Canvas {
public:
    // Replaces everything by the pixels, which have the canvas's size.
    virtual void load(const PixelView& pixels) = 0;
    // What is there now; valid until the next operation.
    virtual PixelView pixels() const = 0;
};

// Makes canvases. Any thread.
class Canvases {
public:
    virtual ~Canvases() = default;

    // Nothing when there is no memory for it or a side is under 1.
    virtual std::unique_ptr<BitmapCanvas> makeBitmap(PixelSize size) = 0;
};

} // namespace clipwren
