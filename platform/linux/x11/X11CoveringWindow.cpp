#include "platform/linux/x11/X11CoveringWindow.h"

#include "platform/linux/x11/X11KeyboardGrab.h"
#include "platform/linux/x11/X11WindowStack.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace clipwren {

namespace {

constexpr std::uint8_t eventTypeMask = 0x7F;
constexpr xcb_button_t primaryButton = 1;
// For the windows below to find their places, and to paint what was under this one.
constexpr auto uncoveringTime = std::chrono::milliseconds(150);

} // namespace

std::unique_ptr<X11CoveringWindow> X11CoveringWindow::create(const Surroundings& surroundings,
                                                             const X11CoverSurface::Place& place,
                                                             bool canBecomeKey) {
    auto surface = X11CoverSurface::create(surroundings.connection, surroundings.compositor, place);
    if (!surface) return nullptr;
    return std::unique_ptr<X11CoveringWindow>(
        new X11CoveringWindow(surroundings, place, canBecomeKey, std::move(surface)));
}

X11CoveringWindow::X11CoveringWindow(const Surroundings& surroundings, const X11CoverSurface::Place& place,
                                     bool canBecomeKey, std::unique_ptr<X11CoverSurface> firstSurface)
    : surroundings(surroundings),
      place(place),
      canBecomeKey(canBecomeKey),
      surface(std::move(firstSurface)),
      shown(surroundings.face) {
    displaying.setSingleShot(true);
    QObject::connect(&displaying, &QTimer::timeout, &displaying, [this] { display(); });
    renewing.setSingleShot(true);
    renewing.setInterval(uncoveringTime);
    QObject::connect(&renewing, &QTimer::timeout, &renewing, [this] { makeSurfaceAnew(); });
    events =
        surroundings.connection.subscribe([this](const xcb_generic_event_t& event) { return handle(event); });
    // The windows below have until the change is told to paint what no compositor keeps for them any more.
    compositorEnd = surroundings.compositor.subscribeToEnd([this] { dropSurface(); });
    compositorChanges = surroundings.compositor.subscribe([this] {
        dropSurface();
        if (!renewing.isActive()) makeSurfaceAnew();
    });
    screenChanges = surroundings.screenWatch.subscribe([this] { followScreen(); });
}

X11CoveringWindow::~X11CoveringWindow() { orderOut(); }

std::int64_t X11CoveringWindow::windowNumber() const { return surface ? surface->id() : 0; }

void X11CoveringWindow::setContent(const std::shared_ptr<CoveringWindowContent>& newContent) {
    content = newContent;
}

void X11CoveringWindow::setHole(const std::optional<Rect>& newHole) {
    hole = newHole;
    if (surface) applyHole();
}

void X11CoveringWindow::makeKeyAndOrderFront() {
    // Before anything can be seen: who sees the window and presses a key means the window.
    if (canBecomeKey) surroundings.keyboardGrab.hold(this);
    orderFrontRegardless();
}

void X11CoveringWindow::orderFrontRegardless() {
    if (std::exchange(isOrderedIn, true)) return;
    // Nothing would be right yet, least of all a photograph of the screen.
    if (surroundings.screenWatch.isSettling())
        renewing.start();
    else if (surface)
        putUp();
}

void X11CoveringWindow::orderOut() {
    isOrderedIn = false;
    surroundings.keyboardGrab.letGo(this);
    takeDown();
}

void X11CoveringWindow::putUp() {
    shown = record();
    surface->show(shown);
    surroundings.stack.add(surface->id());
    // The pointer may be over the window already.
    if (const auto target = content.lock(); target && !place.ignoresMouseEvents) target->cursorUpdate();
}

void X11CoveringWindow::takeDown() {
    displaying.stop();
    isDragging = false;
    exposed = {};
    if (!surface) return;
    surroundings.stack.remove(surface->id());
    surface->hide();
}

void X11CoveringWindow::makeSurfaceAnew() {
    if (!isOnScreen) return;
    surface = X11CoverSurface::create(surroundings.connection, surroundings.compositor, place);
    if (!surface) return;
    applyHole();
    applyCursor();
    if (isOrderedIn) putUp();
}

void X11CoveringWindow::followScreen() {
    if (place.screen.id == 0) return;
    const auto& screens = surroundings.screenWatch.screens();
    const auto screen = std::ranges::find(screens, place.screen.id, &NativeScreen::id);
    if (screen != screens.end() && screen->pixels == place.screen.pixels && surface) return;
    renewing.stop();
    dropSurface();
    isOnScreen = screen != screens.end();
    if (!isOnScreen) return;
    place.screen.pixels = screen->pixels;
    renewing.start();
}

void X11CoveringWindow::dropSurface() {
    isDragging = false;
    exposed = {};
    if (!surface) return;
    surroundings.stack.remove(surface->id());
    surface->vanish();
    surface.reset();
}

void X11CoveringWindow::setNeedsDisplay() {
    if (!displaying.isActive()) displaying.start(0);
}

CanvasRecording X11CoveringWindow::record() const {
    CanvasRecording recording(surroundings.face);
    if (const auto target = content.lock()) target->draw(recording, place.screen.localBounds());
    return recording;
}

void X11CoveringWindow::display() {
    if (!isOrderedIn || !surface) return;
    CanvasRecording next = record();
    const QRegion changed =
        CanvasRecording::difference(shown, next, place.screen.frame.height, place.screen.scale);
    shown = std::move(next);
    surface->paint(shown, changed);
}

void X11CoveringWindow::setCrosshairCursor() {
    if (std::exchange(hasCrosshair, true)) return;
    applyCursor();
}

void X11CoveringWindow::applyHole() {
    surface->setHole(hole ? std::optional(place.screen.pixelsTouching(*hole)) : std::nullopt);
}

void X11CoveringWindow::applyCursor() {
    if (surface && hasCrosshair && surroundings.crosshair != XCB_NONE)
        xcb_change_window_attributes(surroundings.connection.raw(), surface->id(), XCB_CW_CURSOR,
                                     &surroundings.crosshair);
}

// The content may destroy this window in any of its calls: each is the last thing done here.
bool X11CoveringWindow::handle(const xcb_generic_event_t& event) {
    if (!surface) return false;
    const auto target = content.lock();
    switch (event.response_type & eventTypeMask) {
    case XCB_EXPOSE: {
        const auto& expose = reinterpret_cast<const xcb_expose_event_t&>(event);
        if (expose.window != surface->id()) return false;
        repaint(expose);
        return true;
    }
    case XCB_BUTTON_PRESS: {
        const auto& press = reinterpret_cast<const xcb_button_press_event_t&>(event);
        if (press.event != surface->id()) return false;
        if (press.detail != primaryButton) return true;
        isDragging = true;
        if (target) target->mouseDown(place.screen.localPoint(press.event_x, press.event_y));
        return true;
    }
    case XCB_MOTION_NOTIFY: {
        const auto& motion = reinterpret_cast<const xcb_motion_notify_event_t&>(event);
        if (motion.event != surface->id()) return false;
        if (target && isDragging)
            target->mouseDragged(place.screen.localPoint(motion.event_x, motion.event_y));
        return true;
    }
    case XCB_BUTTON_RELEASE: {
        const auto& release = reinterpret_cast<const xcb_button_release_event_t&>(event);
        if (release.event != surface->id()) return false;
        if (release.detail != primaryButton || !std::exchange(isDragging, false)) return true;
        if (target) target->mouseUp(place.screen.localPoint(release.event_x, release.event_y));
        return true;
    }
    case XCB_ENTER_NOTIFY: {
        if (reinterpret_cast<const xcb_enter_notify_event_t&>(event).event != surface->id()) return false;
        if (target) target->mouseEntered();
        return true;
    }
    default: return false;
    }
}

void X11CoveringWindow::repaint(const xcb_expose_event_t& event) {
    exposed += QRect(event.x, event.y, event.width, event.height);
    if (event.count == 0) surface->paint(shown, std::exchange(exposed, {}));
}

} // namespace clipwren
