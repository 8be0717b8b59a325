#pragma once

#include "platform/Screens.h"
#include "platform/Windows.h"

#include <cstdint>
#include <memory>

namespace clipwren {

class OverlayView;

// The overlay's window over one screen: above everything, never key, with every event passing through. Main
// thread only.
class OverlayWindow {
public:
    // `captureRegion` in global points. Nothing when the window cannot be made.
    static std::unique_ptr<OverlayWindow> create(Windows& windows, const Screen& screen,
                                                 const Rect& captureRegion);
    ~OverlayWindow();

    std::int64_t windowNumber() const { return window->windowNumber(); }
    void orderFrontRegardless() { window->orderFrontRegardless(); }
    void orderOut() { window->orderOut(); }

private:
    OverlayWindow(std::unique_ptr<CoveringWindow> coveringWindow, std::shared_ptr<OverlayView> overlayView);

    const std::shared_ptr<OverlayView> view;
    const std::unique_ptr<CoveringWindow> window;
};

} // namespace clipwren
