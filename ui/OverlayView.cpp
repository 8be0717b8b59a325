#include "ui/OverlayView.h"

#include <array>

namespace clipwren {

namespace {

constexpr Color veil = Color::black(0.45);

} // namespace

void OverlayView::draw(Canvas& canvas, const Rect& bounds) {
    // A screen that holds no part of the region is dimmed entirely.
    if (bounds.intersects(localRegion()))
        canvas.fill(std::array{bounds, localRegion()}, WindingRule::evenOdd, veil);
    else
        canvas.fill(std::array{bounds}, WindingRule::nonZero, veil);
}

} // namespace clipwren
