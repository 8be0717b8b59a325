#include "platform/linux/x11/X11Windows.h"

#include "platform/linux/x11/X11KeyMonitor.h"
#include "platform/linux/x11/X11Screens.h"

#include <QFontDatabase>

#include <xcb/xcb_cursor.h>

namespace clipwren {

namespace {

// By the name that cursor themes and, without a theme, the server's cursor font know.
xcb_cursor_t loadCrosshair(X11Connection& connection) {
    xcb_cursor_context_t* context = nullptr;
    auto screen = connection.screen();
    if (xcb_cursor_context_new(connection.raw(), &screen, &context) < 0) return XCB_NONE;
    const xcb_cursor_t cursor = xcb_cursor_load_cursor(context, "crosshair");
    xcb_cursor_context_free(context);
    return cursor;
}

} // namespace

X11Windows::X11Windows(X11Connection& connection, X11Screens& screens)
    : connection(connection),
      screens(screens),
      compositor(connection),
      stack(connection),
      keyboardGrab(connection),
      surroundings{.connection = connection,
                   .compositor = compositor,
                   .stack = stack,
                   .keyboardGrab = keyboardGrab,
                   .screenWatch = screens.watch(),
                   .face = interfaceFont(),
                   .crosshair = loadCrosshair(connection)} {}

X11Windows::~X11Windows() {
    if (surroundings.crosshair != XCB_NONE) xcb_free_cursor(connection.raw(), surroundings.crosshair);
}

QFont X11Windows::interfaceFont() { return QFontDatabase::systemFont(QFontDatabase::GeneralFont); }

std::unique_ptr<CoveringWindow> X11Windows::makeCoveringWindow(const CoveringWindowOptions& options) {
    const auto screen = screenWithFrame(screens.nativeScreens(), options.contentRect);
    if (!screen) return nullptr;
    return X11CoveringWindow::create(surroundings,
                                     {.screen = *screen, .ignoresMouseEvents = options.ignoresMouseEvents},
                                     options.canBecomeKey);
}

std::unique_ptr<KeyMonitor> X11Windows::monitorKeyDown(std::function<bool(std::uint32_t keyCode)> handler) {
    return X11KeyMonitor::create(connection, keyboardGrab, std::move(handler));
}

} // namespace clipwren
