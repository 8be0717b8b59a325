#include "ui/RecordingOverlay.h"

#include "platform/Screens.h"
#include "ui/OverlayWindow.h"

#include <utility>

namespace clipwren {

RecordingOverlay::RecordingOverlay(const Platform& platform, const Rect& captureRegion)
    : platform(platform),
      captureRegion(captureRegion) {}

RecordingOverlay::~RecordingOverlay() = default;

void RecordingOverlay::show() {
    for (const Screen& screen : platform.screens.screens()) {
        auto window = OverlayWindow::create(platform.windows, screen, captureRegion);
        if (!window) continue;
        windows.push_back(std::move(window));
        windows.back()->orderFrontRegardless();
    }
}

std::vector<std::int64_t> RecordingOverlay::windowNumbers() const {
    std::vector<std::int64_t> numbers;
    numbers.reserve(windows.size());
    for (const auto& window : windows)
        numbers.push_back(window->windowNumber());
    return numbers;
}

void RecordingOverlay::hide() {
    for (const auto& window : windows)
        window->orderOut();
    windows.clear();
}

} // namespace clipwren
