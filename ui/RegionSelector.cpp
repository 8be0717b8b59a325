#include "ui/RegionSelector.h"

#include "base/Weakly.h"
#include "platform/Application.h"
#include "platform/Screens.h"
#include "platform/Session.h"
#include "platform/Windows.h"
#include "ui/SelectorWindow.h"

#include <utility>

namespace clipwren {

std::shared_ptr<RegionSelector> RegionSelector::create(const Platform& platform,
                                                       std::function<void(std::optional<Rect>)> onComplete) {
    return std::shared_ptr<RegionSelector>(new RegionSelector(platform, std::move(onComplete)));
}

RegionSelector::RegionSelector(const Platform& platform, std::function<void(std::optional<Rect>)> onComplete)
    : platform(platform),
      onComplete(std::move(onComplete)) {}

RegionSelector::~RegionSelector() = default;

void RegionSelector::coverScreens() {
    for (const Screen& screen : platform.screens.screens()) {
        auto window =
            SelectorWindow::create(platform.windows, screen,
                                   weakly(shared_from_this(), [](RegionSelector& selector, const Rect& rect) {
                                       selector.complete(rect);
                                   }));
        if (!window) continue;
        windows.push_back(window);
        window->makeKeyAndOrderFront();
    }
}

void RegionSelector::uncoverScreens() {
    for (const auto& window : windows)
        window->orderOut();
    windows.clear();
}

void RegionSelector::show() {
    coverScreens();
    platform.application.activateIgnoringOtherApps();
    keyMonitor = platform.windows.monitorKeyDown([weakSelf = weak_from_this()](std::uint32_t keyCode) {
        if (keyCode != KeyCode::escape) return false;
        if (const auto self = weakSelf.lock()) self->complete(std::nullopt);
        return true;
    });
    // Where a window is no longer over its screen, what is dragged in it means another place.
    screensObserver =
        platform.screens.observeDidChange(weakly(shared_from_this(), [](RegionSelector& selector) {
            selector.uncoverScreens();
            selector.coverScreens();
        }));
    // A locker cannot lock while the keyboard is taken.
    lockObserver = platform.session.observeWillLock(
        weakly(shared_from_this(), [](RegionSelector& selector) { selector.complete(std::nullopt); }));
}

void RegionSelector::complete(std::optional<Rect> rect) {
    if (std::exchange(finished, true)) return;
    keyMonitor.reset();
    screensObserver.reset();
    lockObserver.reset();
    uncoverScreens();
    onComplete(rect);
}

} // namespace clipwren
