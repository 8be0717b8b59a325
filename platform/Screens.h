#pragma once

#include "base/Geometry.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace clipwren {

struct Screen {
    // In global points; the primary screen's bottom left corner is the origin.
    Rect frame;
    // The number by which the capture knows the screen's display; absent where the platform reports none.
    std::optional<std::uint32_t> screenNumber;
};

// A running observation; destroying it ends it, which may happen inside its own handler.
class ScreensObserver {
public:
    virtual ~ScreensObserver() = default;
};

// The screens that are attached right now. Main thread only.
class Screens {
public:
    virtual ~Screens() = default;

    // All of them in the system's order, which stays the same while none is attached or detached.
    virtual std::vector<Screen> screens() const = 0;

    // The screen that has the user's attention; none without any screen.
    virtual std::optional<Screen> main() const = 0;

    // The number of the main display; 0 without any.
    virtual std::uint32_t mainDisplayID() const = 0;

    // Calls the handler each time after screens have been attached, detached, moved or resized: later, on the
    // main queue, once for what happens together.
    virtual std::unique_ptr<ScreensObserver> observeDidChange(std::function<void()> handler) = 0;
};

} // namespace clipwren
