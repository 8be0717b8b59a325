#include "tests/fakes/FakeCanvas.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace clipwren {

namespace {

Pixel sourceOver(Pixel below, const Color& color, double coverage) {
    const double alpha = color.alpha * coverage;
    const auto mix = [&](int shift, double component) {
        const double old = static_cast<double>((below >> shift) & 0xFF);
        const double mixed = component * 255 * alpha + old * (1 - alpha);
        return static_cast<Pixel>(std::clamp(std::lround(mixed), 0L, 255L)) << shift;
    };
    return mix(24, 1) | mix(16, color.red) | mix(8, color.green) | mix(0, color.blue);
}

bool contains(const Rect& rect, double x, double y) {
    return x >= rect.minX() && x < rect.maxX() && y >= rect.minY() && y < rect.maxY();
}

std::size_t characterCount(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

} // namespace

FakeCanvas::FakeCanvas(PixelSize size)
    : size(size),
      content(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height)) {}

void FakeCanvas::load(const PixelView& view) {
    for (int y = 0; y < size.height; ++y)
        std::copy_n(view.row(y), size.width, content.data() + y * size.width);
}

PixelView FakeCanvas::pixels() const { return {content.data(), size.width, size.height, size.width}; }

Pixel FakeCanvas::pixelAt(int x, int yUp) const {
    return content[static_cast<std::size_t>((size.height - 1 - yUp) * size.width + x)];
}

template <typename Inside>
void FakeCanvas::paint(const Rect& box, const Color& color, Inside inside) {
    const int left = std::max(0, static_cast<int>(std::floor(box.minX())));
    const int right = std::min(size.width, static_cast<int>(std::ceil(box.maxX())));
    const int bottom = std::max(0, static_cast<int>(std::floor(box.minY())));
    const int top = std::min(size.height, static_cast<int>(std::ceil(box.maxY())));
    for (int y = bottom; y < top; ++y) {
        for (int x = left; x < right; ++x) {
            int hits = 0;
            for (int sample = 0; sample < 16; ++sample)
                hits += inside(x + (sample % 4 + 0.5) / 4, y + (sample / 4 + 0.5) / 4) ? 1 : 0;
            if (hits == 0) continue;
            Pixel& pixel = content[static_cast<std::size_t>((size.height - 1 - y) * size.width + x)];
            pixel = sourceOver(pixel, color, hits / 16.0);
        }
    }
}

void FakeCanvas::fill(std::span<const Rect> rectangles, WindingRule rule, const Color& color) {
    operations.push_back({.kind = CanvasOperation::Kind::fill,
                          .rectangles = {rectangles.begin(), rectangles.end()},
                          .rule = rule,
                          .color = color});
    paint({0, 0, static_cast<double>(size.width), static_cast<double>(size.height)}, color,
          [&](double x, double y) {
              const auto windings = std::count_if(rectangles.begin(), rectangles.end(),
                                                  [&](const Rect& r) { return contains(r, x, y); });
              return rule == WindingRule::evenOdd ? windings % 2 == 1 : windings > 0;
          });
}

void FakeCanvas::fillRoundedRectangle(const Rect& rect, double radius, const Color& color) {
    operations.push_back({.kind = CanvasOperation::Kind::roundedRectangle,
                          .rectangles = {rect},
                          .radius = radius,
                          .color = color});
    paint(rect, color, [&](double x, double y) {
        if (!contains(rect, x, y)) return false;
        const double dx = std::max({rect.minX() + radius - x, x - (rect.maxX() - radius), 0.0});
        const double dy = std::max({rect.minY() + radius - y, y - (rect.maxY() - radius), 0.0});
        return dx * dx + dy * dy <= radius * radius;
    });
}

void FakeCanvas::fillOval(const Rect& rect, const Color& color) {
    operations.push_back({.kind = CanvasOperation::Kind::oval, .rectangles = {rect}, .color = color});
    paint(rect, color, [&](double x, double y) {
        const double dx = (x - rect.minX() - rect.width / 2) / (rect.width / 2);
        const double dy = (y - rect.minY() - rect.height / 2) / (rect.height / 2);
        return dx * dx + dy * dy <= 1;
    });
}

void FakeCanvas::strokeRectangle(const Rect& rect, double lineWidth, std::span<const double> dashes,
                                 const Color& color) {
    operations.push_back({.kind = CanvasOperation::Kind::strokedRectangle,
                          .rectangles = {rect},
                          .lineWidth = lineWidth,
                          .dashes = {dashes.begin(), dashes.end()},
                          .color = color});
    double period = 0;
    for (const double dash : dashes)
        period += dash;
    // Along one side, from its beginning at `start` of the whole outline.
    const auto isOn = [&](double along) {
        if (period <= 0) return true;
        double rest = std::fmod(along, period);
        for (std::size_t i = 0; i < dashes.size(); ++i) {
            if (rest < dashes[i]) return i % 2 == 0;
            rest -= dashes[i];
        }
        return false;
    };
    const double half = lineWidth / 2;
    const Rect outer{rect.x - half, rect.y - half, rect.width + lineWidth, rect.height + lineWidth};
    const Rect inner{rect.x + half, rect.y + half, rect.width - lineWidth, rect.height - lineWidth};
    paint(outer, color, [&](double x, double y) {
        if (!contains(outer, x, y) || contains(inner, x, y)) return false;
        if (y < rect.minY() + half) return isOn(std::max(0.0, x - rect.minX()));
        if (x >= rect.maxX() - half) return isOn(rect.width + y - rect.minY());
        if (y >= rect.maxY() - half) return isOn(rect.width + rect.height + rect.maxX() - x);
        return isOn(2 * rect.width + rect.height + rect.maxY() - y);
    });
}

Size FakeCanvas::measure(std::string_view text, const Font& font) const {
    return {static_cast<double>(characterCount(text)) * (font.size * 0.6 + font.kern), font.size * 1.2};
}

void FakeCanvas::drawText(std::string_view text, Point bottomLeft, const Font& font, const Color& color) {
    operations.push_back({.kind = CanvasOperation::Kind::text,
                          .text = std::string(text),
                          .position = bottomLeft,
                          .font = font,
                          .color = color});
    const double advance = font.size * 0.6 + font.kern;
    for (std::size_t i = 0; i < characterCount(text); ++i) {
        const Rect box{bottomLeft.x + static_cast<double>(i) * advance + font.size * 0.1,
                       bottomLeft.y + font.size * 0.2, font.size * 0.4, font.size * 0.7};
        paint(box, color, [&](double x, double y) { return contains(box, x, y); });
    }
}

std::unique_ptr<BitmapCanvas> FakeCanvases::makeBitmap(PixelSize size) {
    if (refuses || size.width < 1 || size.height < 1) return nullptr;
    return std::make_unique<FakeCanvas>(size);
}

} // namespace clipwren
