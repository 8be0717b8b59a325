#pragma once

#include "platform/Screens.h"
#include "platform/Windows.h"

#include <functional>
#include <memory>

namespace clipwren {

class SelectorView;

// The selector's window over one screen. It takes keys but never becomes the user's main window. Main thread
// only.
class SelectorWindow {
public:
    // `onComplete` receives the selection in global points. Nothing when the window cannot be made.
    static std::shared_ptr<SelectorWindow> create(Windows& windows, const Screen& screen,
                                                  std::function<void(const Rect&)> onComplete);
    ~SelectorWindow();

    void makeKeyAndOrderFront() { window->makeKeyAndOrderFront(); }
    void orderOut() { window->orderOut(); }

private:
    SelectorWindow(std::unique_ptr<CoveringWindow> coveringWindow, const Rect& screenFrame,
                   std::function<void(const Rect&)> onComplete);

    const std::function<void(const Rect&)> onComplete;
    const Rect screenFrame;
    const std::shared_ptr<SelectorView> view;
    const std::unique_ptr<CoveringWindow> window;
};

} // namespace clipwren
