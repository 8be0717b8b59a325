#pragma once

#include "platform/Windows.h"

#include <functional>
#include <optional>

namespace clipwren {

// What a selector window shows on its screen: the dimming, and while the user drags, the clear selection with
// its border and size. Coordinates are points of the window, y up. Main thread only.
class SelectorView : public CoveringWindowContent {
public:
    // Receives the selection in points of the window; a selection is at least 8 × 8 points.
    std::function<void(const Rect&)> onComplete;
    // The window that shows the view; none once it is gone.
    CoveringWindow* window = nullptr;

    void draw(Canvas& canvas, const Rect& bounds) override;
    void mouseDown(Point locationInWindow) override;
    void mouseDragged(Point locationInWindow) override;
    void mouseUp(Point locationInWindow) override;
    void mouseEntered() override;
    void cursorUpdate() override;

private:
    void setCurrentRect(const Rect& rect);
    void drawSizeLabel(Canvas& canvas) const;

    std::optional<Point> startPoint; // where the drag began; none without a drag
    Rect currentRect;                // zero while nothing is chosen; not clamped to the window
};

} // namespace clipwren
