#include "encoding/Watermark.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

namespace clipwren {

namespace {

constexpr Color dotColor(double alpha) { return {1, 59 / 255.0, 48 / 255.0, alpha}; }
constexpr double pillAlpha = 0.55;
constexpr double kern = 0.4;
// Glyphs may reach out of their typographic box.
constexpr int overhang = 2;

// The pixels of the picture, y downward, that the badge may touch.
PixelRect touchedPixels(const WatermarkLayout& layout, PixelSize image) {
    const int left = static_cast<int>(std::floor(layout.pill.minX())) - overhang;
    const int right = static_cast<int>(std::ceil(layout.pill.maxX())) + overhang;
    const int bottom = static_cast<int>(std::floor(layout.pill.minY())) - overhang;
    const int top = static_cast<int>(std::ceil(layout.pill.maxY())) + overhang;
    return PixelRect{left, image.height - top, right - left, top - bottom}.intersection(
        {0, 0, image.width, image.height});
}

// Paints the badge on a canvas whose bottom left corner lies at `origin` of the picture.
void paint(Canvas& canvas, const WatermarkLayout& layout, const WatermarkPulse& pulse, Point origin) {
    Rect pill = layout.pill;
    pill.x -= origin.x;
    pill.y -= origin.y;
    canvas.fillRoundedRectangle(pill, pill.height / 2, Color::black(pillAlpha));

    const double diameter = layout.dotDiameter * pulse.diameterFactor;
    canvas.fillOval({layout.dotCenter.x - origin.x - diameter / 2,
                     layout.dotCenter.y - origin.y - diameter / 2, diameter, diameter},
                    dotColor(pulse.alpha));

    canvas.drawText(watermarkText, {layout.textOrigin.x - origin.x, layout.textOrigin.y - origin.y},
                    layout.font, Color::white());
}

} // namespace

Font watermarkFont(int imageHeight) {
    return {.size = std::max(imageHeight * 0.03, 11.0), .weight = FontWeight::semibold, .kern = kern};
}

WatermarkLayout watermarkLayout(PixelSize image, Size textSize) {
    WatermarkLayout layout;
    layout.font = watermarkFont(image.height);
    const double fontSize = layout.font.size;
    layout.dotDiameter = fontSize * 0.65;
    layout.gap = fontSize * 0.55;
    layout.verticalInset = std::max(fontSize * 0.35, 4.0);
    layout.horizontalInset = std::max(fontSize * 0.65, 8.0);
    layout.margin = std::max(image.height * 0.025, 8.0);

    const double width = layout.dotDiameter + layout.gap + textSize.width + 2 * layout.horizontalInset;
    const double height = textSize.height + 2 * layout.verticalInset;
    layout.pill = {image.width - width - layout.margin, layout.margin, width, height};
    layout.dotCenter = {layout.pill.minX() + layout.horizontalInset + layout.dotDiameter / 2,
                        layout.pill.minY() + height / 2};
    layout.textOrigin = {layout.pill.minX() + layout.horizontalInset + layout.dotDiameter + layout.gap,
                         layout.pill.minY() + layout.verticalInset};
    return layout;
}

WatermarkPulse watermarkPulse(double phase) {
    const double p = 0.5 + 0.5 * std::sin(2 * std::numbers::pi * phase);
    return {.diameterFactor = 0.92 + 0.18 * p, .alpha = 0.65 + 0.35 * p};
}

std::optional<Image> applyWatermark(const Image& image, double pulsePhase, Canvases& canvases) {
    const PixelSize size{image.width(), image.height()};
    // Text is measured on a canvas, and the measure tells how large the one to paint on has to be.
    const std::unique_ptr<BitmapCanvas> ruler = canvases.makeBitmap({1, 1});
    if (!ruler) return std::nullopt;
    const auto layout = watermarkLayout(size, ruler->measure(watermarkText, watermarkFont(size.height)));

    const PixelRect touched = touchedPixels(layout, size);
    if (touched.isEmpty()) return image;
    const std::unique_ptr<BitmapCanvas> canvas = canvases.makeBitmap({touched.width, touched.height});
    if (!canvas) return std::nullopt;

    std::vector<Pixel> below(static_cast<std::size_t>(touched.area()));
    image.copy(touched, below.data(), touched.width);
    canvas->load({below.data(), touched.width, touched.height, touched.width});
    paint(*canvas, layout, watermarkPulse(pulsePhase),
          {static_cast<double>(touched.x), static_cast<double>(size.height - touched.maxY())});
    const PixelView painted = canvas->pixels();
    return image.replacing(std::array{Image::Patch{touched, painted.pixels, painted.stride}});
}

} // namespace clipwren
