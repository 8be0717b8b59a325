#pragma once

#include "base/Geometry.h"
#include "platform/Platform.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace clipwren {

class KeyMonitor;
class ScreensObserver;
class SelectorWindow;
class SessionObserver;

// Lets the user drag a rectangle on any screen, once. Main thread only.
class RegionSelector : public std::enable_shared_from_this<RegionSelector> {
public:
    // `onComplete` hears exactly one outcome, after the windows are gone: the rectangle in global points,
    // neither rounded nor clamped, or none for a cancel.
    static std::shared_ptr<RegionSelector> create(const Platform& platform,
                                                  std::function<void(std::optional<Rect>)> onComplete);
    ~RegionSelector();

    // Puts a window on every screen. Escape then cancels, and so does a screen that is about to be locked.
    // When the screens change, the selection begins anew on those that there are then.
    void show();

    // The single exit: takes the windows down and reports. A second call does nothing.
    void complete(std::optional<Rect> rect);

private:
    RegionSelector(const Platform& platform, std::function<void(std::optional<Rect>)> onComplete);

    void coverScreens();
    void uncoverScreens();

    const Platform& platform;
    std::vector<std::shared_ptr<SelectorWindow>> windows;
    std::unique_ptr<KeyMonitor> keyMonitor;
    std::unique_ptr<ScreensObserver> screensObserver;
    std::unique_ptr<SessionObserver> lockObserver;
    const std::function<void(std::optional<Rect>)> onComplete;
    bool finished = false;
};

} // namespace clipwren
