#include "ui/SelectorWindow.h"

#include "base/Weakly.h"
#include "ui/SelectorView.h"

#include <utility>

namespace clipwren {

std::shared_ptr<SelectorWindow> SelectorWindow::create(Windows& windows, const Screen& screen,
                                                       std::function<void(const Rect&)> onComplete) {
    auto coveringWindow = windows.makeCoveringWindow(
        {.contentRect = screen.frame,
         .level = WindowLevel::screenSaver,
         .ignoresMouseEvents = false,
         .acceptsMouseMovedEvents = true,
         .canBecomeKey = true,
         .collectionBehavior = CollectionBehavior::canJoinAllSpaces + CollectionBehavior::stationary +
                               CollectionBehavior::fullScreenAuxiliary,
         .sharing = WindowSharing::none});
    if (!coveringWindow) return nullptr;
    std::shared_ptr<SelectorWindow> self(
        new SelectorWindow(std::move(coveringWindow), screen.frame, std::move(onComplete)));
    self->view->onComplete = weakly(self, [](SelectorWindow& owner, const Rect& rect) {
        owner.onComplete({owner.screenFrame.minX() + rect.minX(), owner.screenFrame.minY() + rect.minY(),
                          rect.width, rect.height});
    });
    return self;
}

SelectorWindow::SelectorWindow(std::unique_ptr<CoveringWindow> coveringWindow, const Rect& screenFrame,
                               std::function<void(const Rect&)> onComplete)
    : onComplete(std::move(onComplete)),
      screenFrame(screenFrame),
      view(std::make_shared<SelectorView>()),
      window(std::move(coveringWindow)) {
    view->window = window.get();
    window->setContent(view);
}

SelectorWindow::~SelectorWindow() { view->window = nullptr; }

} // namespace clipwren
