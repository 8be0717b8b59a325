#pragma once

#include "base/Geometry.h"
#include "platform/Canvas.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace clipwren {

enum class WindowLevel {
    screenSaver = 1000, // above panels and docks
    shielding = 1001,   // above everything, menus included
};

// How a window behaves towards workspaces and full-screen windows; combined by addition.
struct CollectionBehavior {
    static constexpr unsigned canJoinAllSpaces = 1;
    static constexpr unsigned stationary = 16;
    static constexpr unsigned ignoresCycle = 64;
    static constexpr unsigned fullScreenAuxiliary = 256;
};

// Whether other programs' captures may see a window; here always `none`: it stays out of what is captured.
enum class WindowSharing { none = 0 };

// What a covering window is made with. It is borderless, transparent and without shadow in any case.
struct CoveringWindowOptions {
    Rect contentRect; // global points: the frame of the screen to cover
    WindowLevel level = WindowLevel::screenSaver;
    bool ignoresMouseEvents = false; // true: clicks, wheel and keys reach what lies below
    bool acceptsMouseMovedEvents = false;
    bool canBecomeKey = false; // whether keys are kept for it; never takes the focus from the user's window
    unsigned collectionBehavior = 0;
    WindowSharing sharing = WindowSharing::none;
};

// What a covering window shows and what happens in it. Points are local: origin at the window's bottom left,
// not clamped to it while a drag goes on outside. Main thread.
class CoveringWindowContent {
public:
    virtual ~CoveringWindowContent() = default;

    // Paints the whole content onto a transparent canvas of the size of `bounds`.
    virtual void draw(Canvas& canvas, const Rect& bounds) = 0;

    // The primary button; a content that ignores the mouse is never called.
    virtual void mouseDown(Point locationInWindow) = 0;
    virtual void mouseDragged(Point locationInWindow) = 0;
    virtual void mouseUp(Point locationInWindow) = 0;
    virtual void mouseEntered() = 0;
    virtual void cursorUpdate() = 0;
};

// A borderless window over one screen. Main thread only. Destroying it takes it down, which may happen inside
// a call to its own content.
class CoveringWindow {
public:
    virtual ~CoveringWindow() = default;

    // Names the window to the capture; valid once the window is shown.
    virtual std::int64_t windowNumber() const = 0;

    // Held weakly; set before the window is shown.
    virtual void setContent(const std::shared_ptr<CoveringWindowContent>& content) = 0;

    // Local points. Nothing of the window exists inside the hole: it is not painted there, catches no click
    // there and can be in no capture of that area. Rounded outward to whole pixels. Independent of what the
    // content paints.
    virtual void setHole(const std::optional<Rect>& hole) = 0;

    // A window that can become key keeps the keys for its program from before it can be seen: those pressed
    // until the key monitor is there are offered to that.
    virtual void makeKeyAndOrderFront() = 0;
    virtual void orderFrontRegardless() = 0;

    // Takes the window off the screen and returns when the display server no longer shows it, after a bounded
    // wait at the latest. A hidden window stays hidden.
    virtual void orderOut() = 0;

    // The content is painted again soon, once for any number of calls.
    virtual void setNeedsDisplay() = 0;

    virtual void setCrosshairCursor() = 0;
};

// A running key monitor; destroying it ends it, which may happen inside its own handler.
class KeyMonitor {
public:
    virtual ~KeyMonitor() = default;
};

// Virtual key codes that the program names, by position on the keyboard.
struct KeyCode {
    static constexpr std::uint32_t g = 5;
    static constexpr std::uint32_t escape = 53;
};

// Makes covering windows. Main thread only.
class Windows {
public:
    virtual ~Windows() = default;

    // Nothing when the display server refuses.
    virtual std::unique_ptr<CoveringWindow> makeCoveringWindow(const CoveringWindowOptions& options) = 0;

    // Key presses while a covering window that can become key is shown are offered to `handler`, which
    // returns true to swallow the key. Nothing when keys cannot be watched.
    virtual std::unique_ptr<KeyMonitor>
    monitorKeyDown(std::function<bool(std::uint32_t keyCode)> handler) = 0;
};

} // namespace clipwren
