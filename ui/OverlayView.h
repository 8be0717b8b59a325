#pragma once

#include "platform/Windows.h"

namespace clipwren {

// The veil over one screen, with a hole where the recorded region lies. It takes no events. Main thread only.
class OverlayView : public CoveringWindowContent {
public:
    // Both in global points.
    OverlayView(const Rect& screenFrame, const Rect& captureRegion)
        : screenFrame(screenFrame),
          captureRegion(captureRegion) {}

    // The region in points of the view.
    Rect localRegion() const {
        return {captureRegion.minX() - screenFrame.minX(), captureRegion.minY() - screenFrame.minY(),
                captureRegion.width, captureRegion.height};
    }

    void draw(Canvas& canvas, const Rect& bounds) override;
    void mouseDown(Point) override {}
    void mouseDragged(Point) override {}
    void mouseUp(Point) override {}
    void mouseEntered() override {}
    void cursorUpdate() override {}

private:
    const Rect screenFrame;
    const Rect captureRegion;
};

} // namespace clipwren
