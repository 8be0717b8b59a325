#pragma once

#include "platform/Windows.h"
#include "tests/fakes/FakeCanvas.h"

#include <memory>
#include <vector>

namespace clipwren {

// What a test can see of a covering window, also after the window itself is gone.
struct FakeWindowState {
    CoveringWindowOptions options;
    std::int64_t number = 0;
    bool isVisible = false;
    bool wasMadeKey = false;
    bool isDestroyed = false;
    bool hasCrosshair = false;
    int displayRequests = 0;
    std::optional<Rect> hole;
    std::weak_ptr<CoveringWindowContent> content;

    // Sends an event the way a display server does: only to a shown window that takes the mouse.
    void mouseDown(Point point) const;
    void mouseDragged(Point point) const;
    void mouseUp(Point point) const;
    void mouseEntered() const;
    // A whole drag from one point to another.
    void drag(Point from, Point to) const;

    // Paints the content once, as for a window of the options' size.
    std::unique_ptr<FakeCanvas> painted() const;

private:
    std::shared_ptr<CoveringWindowContent> receiver() const;
};

class FakeWindows : public Windows {
public:
    bool refusesWindows = false;
    bool refusesKeyMonitor = false;
    // Every window ever made, in order.
    std::vector<std::shared_ptr<FakeWindowState>> made;
    // Live key monitors.
    int keyMonitorCount = 0;
    // What happened in which order: "show 1", "order out 1", "monitor keys", "end key monitor".
    std::vector<std::string> events;

    std::unique_ptr<CoveringWindow> makeCoveringWindow(const CoveringWindowOptions& options) override;
    std::unique_ptr<KeyMonitor> monitorKeyDown(std::function<bool(std::uint32_t)> handler) override;

    std::vector<std::shared_ptr<FakeWindowState>> visible() const;
    // True when the monitor swallowed the key; false also without one. Without one a key window keeps the
    // key.
    bool pressKey(std::uint32_t keyCode);
    // Offers the kept keys to the monitor, as an event loop does once it goes on.
    void handOutKeptKeys();

private:
    friend class FakeKeyMonitor;
    std::function<bool(std::uint32_t)> keyHandler;
    std::vector<std::uint32_t> keptKeys;
};

} // namespace clipwren
