#pragma once

#include "platform/Windows.h"
#include "platform/linux/x11/X11Compositor.h"
#include "platform/linux/x11/X11CoverSurface.h"
#include "platform/linux/x11/X11ScreenWatch.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

namespace clipwren {

class X11KeyboardGrab;
class X11WindowStack;

// A covering window on an X server. Its surface is made anew when a compositor starts or ends, and when its
// screen moves or is resized, so that it goes on covering it; what it shows stays where it is as seen from
// the screen's top left. While the screen is gone there is no surface. Its number changes with the surface.
// Main thread only.
class X11CoveringWindow final : public CoveringWindow {
public:
    // What all covering windows share; outlives them.
    struct Surroundings {
        X11Connection& connection;
        X11Compositor& compositor;
        X11WindowStack& stack;
        X11KeyboardGrab& keyboardGrab;
        X11ScreenWatch& screenWatch;
        QFont face;
        xcb_cursor_t crosshair = XCB_NONE;
    };

    // Null when the server refuses.
    static std::unique_ptr<X11CoveringWindow> create(const Surroundings& surroundings,
                                                     const X11CoverSurface::Place& place, bool canBecomeKey);
    ~X11CoveringWindow() override;

    std::int64_t windowNumber() const override;
    void setContent(const std::shared_ptr<CoveringWindowContent>& newContent) override;
    void setHole(const std::optional<Rect>& hole) override;
    void makeKeyAndOrderFront() override;
    void orderFrontRegardless() override;
    void orderOut() override;
    void setNeedsDisplay() override;
    void setCrosshairCursor() override;

private:
    X11CoveringWindow(const Surroundings& surroundings, const X11CoverSurface::Place& place,
                      bool canBecomeKey, std::unique_ptr<X11CoverSurface> firstSurface);
    bool handle(const xcb_generic_event_t& event);
    void repaint(const xcb_expose_event_t& event);
    CanvasRecording record() const;
    void display();
    void putUp();
    void takeDown();
    void makeSurfaceAnew();
    void dropSurface();
    void followScreen();
    void applyHole();
    void applyCursor();

    const Surroundings& surroundings;
    X11CoverSurface::Place place;
    const bool canBecomeKey;
    std::unique_ptr<X11CoverSurface> surface;
    std::weak_ptr<CoveringWindowContent> content;
    std::optional<Rect> hole;
    CanvasRecording shown; // what the surface shows
    QRegion exposed;       // what it has lost and not yet been told the end of
    bool isOrderedIn = false;
    bool isOnScreen = true; // whether the screen is there
    bool isDragging = false;
    bool hasCrosshair = false;
    QTimer displaying;
    QTimer renewing;
    X11Connection::Subscription events;
    Listeners::Subscription compositorEnd;
    Listeners::Subscription compositorChanges;
    Listeners::Subscription screenChanges;
};

} // namespace clipwren
