#include "tests/fakes/FakeWindows.h"

#include <string>
#include <utility>

namespace clipwren {

namespace {

class FakeCoveringWindow : public CoveringWindow {
public:
    FakeCoveringWindow(std::shared_ptr<FakeWindowState> state, std::vector<std::string>& events)
        : state(std::move(state)),
          events(events) {}
    ~FakeCoveringWindow() override {
        orderOut();
        state->isDestroyed = true;
    }

    std::int64_t windowNumber() const override { return state->number; }
    void setContent(const std::shared_ptr<CoveringWindowContent>& content) override {
        state->content = content;
    }
    void setHole(const std::optional<Rect>& hole) override { state->hole = hole; }
    void makeKeyAndOrderFront() override {
        orderFrontRegardless();
        state->wasMadeKey = state->options.canBecomeKey;
    }
    void orderFrontRegardless() override {
        state->isVisible = true;
        events.push_back("show " + std::to_string(state->number));
        if (const auto content = state->content.lock(); content && !state->options.ignoresMouseEvents)
            content->cursorUpdate();
    }
    void orderOut() override {
        if (!std::exchange(state->isVisible, false)) return;
        events.push_back("order out " + std::to_string(state->number));
    }
    void setNeedsDisplay() override { ++state->displayRequests; }
    void setCrosshairCursor() override { state->hasCrosshair = true; }

private:
    std::shared_ptr<FakeWindowState> state;
    std::vector<std::string>& events;
};

} // namespace

class FakeKeyMonitor : public KeyMonitor {
public:
    explicit FakeKeyMonitor(FakeWindows& windows) : windows(windows) { ++windows.keyMonitorCount; }
    ~FakeKeyMonitor() override {
        --windows.keyMonitorCount;
        windows.keyHandler = nullptr;
        windows.events.push_back("end key monitor");
    }

private:
    FakeWindows& windows;
};

std::shared_ptr<CoveringWindowContent> FakeWindowState::receiver() const {
    return isVisible && !options.ignoresMouseEvents ? content.lock() : nullptr;
}

void FakeWindowState::mouseDown(Point point) const {
    if (const auto target = receiver()) target->mouseDown(point);
}

void FakeWindowState::mouseDragged(Point point) const {
    if (const auto target = receiver()) target->mouseDragged(point);
}

void FakeWindowState::mouseUp(Point point) const {
    if (const auto target = receiver()) target->mouseUp(point);
}

void FakeWindowState::mouseEntered() const {
    if (const auto target = receiver()) target->mouseEntered();
}

void FakeWindowState::drag(Point from, Point to) const {
    mouseDown(from);
    mouseDragged(to);
    mouseUp(to);
}

std::unique_ptr<FakeCanvas> FakeWindowState::painted() const {
    auto canvas = std::make_unique<FakeCanvas>(
        PixelSize{static_cast<int>(options.contentRect.width), static_cast<int>(options.contentRect.height)});
    if (const auto target = content.lock())
        target->draw(*canvas, {0, 0, options.contentRect.width, options.contentRect.height});
    return canvas;
}

std::unique_ptr<CoveringWindow> FakeWindows::makeCoveringWindow(const CoveringWindowOptions& options) {
    if (refusesWindows) return nullptr;
    auto state = std::make_shared<FakeWindowState>();
    state->options = options;
    state->number = static_cast<std::int64_t>(made.size()) + 1;
    made.push_back(state);
    return std::make_unique<FakeCoveringWindow>(std::move(state), events);
}

std::unique_ptr<KeyMonitor> FakeWindows::monitorKeyDown(std::function<bool(std::uint32_t)> handler) {
    if (refusesKeyMonitor) return nullptr;
    keyHandler = std::move(handler);
    events.emplace_back("monitor keys");
    return std::make_unique<FakeKeyMonitor>(*this);
}

std::vector<std::shared_ptr<FakeWindowState>> FakeWindows::visible() const {
    std::vector<std::shared_ptr<FakeWindowState>> result;
    for (const auto& state : made)
        if (state->isVisible) result.push_back(state);
    return result;
}

bool FakeWindows::pressKey(std::uint32_t keyCode) {
    const auto handler = keyHandler; // The handler may end the monitor that holds it.
    if (handler) return handler(keyCode);
    for (const auto& window : visible())
        if (window->wasMadeKey) {
            keptKeys.push_back(keyCode);
            break;
        }
    return false;
}

void FakeWindows::handOutKeptKeys() {
    for (const std::uint32_t keyCode : std::exchange(keptKeys, {}))
        if (const auto handler = keyHandler) handler(keyCode);
}

} // namespace clipwren
