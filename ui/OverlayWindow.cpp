#include "ui/OverlayWindow.h"

#include "ui/OverlayView.h"

#include <utility>

namespace clipwren {

std::unique_ptr<OverlayWindow> OverlayWindow::create(Windows& windows, const Screen& screen,
                                                     const Rect& captureRegion) {
    auto coveringWindow = windows.makeCoveringWindow(
        {.contentRect = screen.frame,
         .level = WindowLevel::shielding,
         .ignoresMouseEvents = true,
         .acceptsMouseMovedEvents = false,
         .canBecomeKey = false,
         .collectionBehavior = CollectionBehavior::canJoinAllSpaces + CollectionBehavior::stationary +
                               CollectionBehavior::ignoresCycle + CollectionBehavior::fullScreenAuxiliary,
         .sharing = WindowSharing::none});
    if (!coveringWindow) return nullptr;
    auto overlayView = std::make_shared<OverlayView>(screen.frame, captureRegion);
    return std::unique_ptr<OverlayWindow>(
        new OverlayWindow(std::move(coveringWindow), std::move(overlayView)));
}

OverlayWindow::OverlayWindow(std::unique_ptr<CoveringWindow> coveringWindow,
                             std::shared_ptr<OverlayView> overlayView)
    : view(std::move(overlayView)),
      window(std::move(coveringWindow)) {
    window->setContent(view);
    // Painting alone would leave a window there, which a capture sees as soon as a compositor shades or blurs
    // it.
    window->setHole(view->localRegion());
}

OverlayWindow::~OverlayWindow() = default;

} // namespace clipwren
