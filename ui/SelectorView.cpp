#include "ui/SelectorView.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace clipwren {

namespace {

constexpr double smallestSide = 8;
constexpr Color dimming = Color::black(0.35);
constexpr Color labelBackground = Color::black(0.75);
constexpr Font labelFont{.size = 11, .weight = FontWeight::medium, .monospacedDigits = true};
constexpr std::array dashes{4.0, 2.0};

// Halves away from zero.
std::string wholePoints(double length) { return std::to_string(std::llround(length)); }

} // namespace

void SelectorView::setCurrentRect(const Rect& rect) {
    currentRect = rect;
    if (window) window->setNeedsDisplay();
}

void SelectorView::mouseDown(Point locationInWindow) {
    startPoint = locationInWindow;
    setCurrentRect({});
}

void SelectorView::mouseDragged(Point locationInWindow) {
    if (!startPoint) return;
    setCurrentRect({std::min(startPoint->x, locationInWindow.x), std::min(startPoint->y, locationInWindow.y),
                    std::fabs(locationInWindow.x - startPoint->x),
                    std::fabs(locationInWindow.y - startPoint->y)});
}

void SelectorView::mouseUp(Point) {
    if (!startPoint) return;
    startPoint.reset();
    if (currentRect.width >= smallestSide && currentRect.height >= smallestSide) {
        if (onComplete) onComplete(currentRect);
    } else {
        setCurrentRect({});
    }
}

void SelectorView::mouseEntered() { cursorUpdate(); }

void SelectorView::cursorUpdate() {
    if (window) window->setCrosshairCursor();
}

void SelectorView::draw(Canvas& canvas, const Rect& bounds) {
    if (currentRect == Rect{}) {
        canvas.fill(std::array{bounds}, WindingRule::nonZero, dimming);
        return;
    }
    canvas.fill(std::array{bounds, currentRect}, WindingRule::evenOdd, dimming);
    canvas.strokeRectangle(currentRect, 1, dashes, Color::white());
    drawSizeLabel(canvas);
}

void SelectorView::drawSizeLabel(Canvas& canvas) const {
    const std::string text = wholePoints(currentRect.width) + " × " + wholePoints(currentRect.height);
    const Size size = canvas.measure(text, labelFont);
    // Under the selection; at the bottom of the screen it moves up over it.
    const Rect box{currentRect.minX(), std::max(currentRect.minY() - size.height - 6, 0.0), size.width + 10,
                   size.height + 4};
    canvas.fillRoundedRectangle(box, 3, labelBackground);
    canvas.drawText(text, {box.minX() + 5, box.minY() + 2}, labelFont, Color::white());
}

} // namespace clipwren
