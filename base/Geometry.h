#pragma once

#include <algorithm>
#include <cstdint>

namespace clipwren {

// Points and rectangles in *points*: doubles, origin at the bottom left of the primary screen (global
// coordinates) or of a window (local coordinates), y growing upward. Nothing is rounded or clamped here.

struct Point {
    double x = 0;
    double y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
    double width = 0;
    double height = 0;
    friend bool operator==(const Size&, const Size&) = default;
};

// Width and height are expected not to be negative.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double minX() const { return x; }
    double minY() const { return y; }
    double maxX() const { return x + width; }
    double maxY() const { return y + height; }

    // True when the two share an area; touching edges and empty rectangles share none.
    bool intersects(const Rect& other) const {
        return width > 0 && height > 0 && other.width > 0 && other.height > 0 && minX() < other.maxX() &&
               other.minX() < maxX() && minY() < other.maxY() && other.minY() < maxY();
    }

    friend bool operator==(const Rect&, const Rect&) = default;
};

// Rectangles of *pixels* inside a picture: integers, origin at the top left, y growing downward.

struct PixelSize {
    int width = 0;
    int height = 0;
    friend bool operator==(const PixelSize&, const PixelSize&) = default;
};

struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    int maxX() const { return x + width; }
    int maxY() const { return y + height; }
    bool isEmpty() const { return width <= 0 || height <= 0; }
    std::int64_t area() const { return isEmpty() ? 0 : std::int64_t{width} * height; }

    // The common part; an empty rectangle when there is none.
    PixelRect intersection(const PixelRect& other) const {
        const int left = std::max(x, other.x);
        const int top = std::max(y, other.y);
        const int right = std::min(maxX(), other.maxX());
        const int bottom = std::min(maxY(), other.maxY());
        if (right <= left || bottom <= top) return {};
        return {left, top, right - left, bottom - top};
    }

    // The smallest rectangle that holds both; an empty one adds nothing.
    PixelRect united(const PixelRect& other) const {
        if (isEmpty()) return other;
        if (other.isEmpty()) return *this;
        const int left = std::min(x, other.x);
        const int top = std::min(y, other.y);
        return {left, top, std::max(maxX(), other.maxX()) - left, std::max(maxY(), other.maxY()) - top};
    }

    friend bool operator==(const PixelRect&, const PixelRect&) = default;
};

} // namespace clipwren
