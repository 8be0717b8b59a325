#pragma once

#include "platform/linux/qt/CanvasRecording.h"
#include "platform/linux/x11/ScreenLayout.h"
#include "platform/linux/x11/X11Connection.h"

#include <QImage>
#include <QRegion>

#include <xcb/shape.h>

#include <memory>
#include <optional>

namespace clipwren {

class X11Compositor;

// What lies on the server for a covering window: one override-redirect window over one screen, in the form in
// which the server can show something half transparent at that moment. Main thread only.
class X11CoverSurface {
public:
    struct Place {
        NativeScreen screen;
        bool ignoresMouseEvents = false;
    };

    // Not yet shown. Null when the server refuses. The connection and the compositor outlive the surface.
    static std::unique_ptr<X11CoverSurface> create(X11Connection& connection, X11Compositor& compositor,
                                                   const Place& place);
    // Hides the window first.
    ~X11CoverSurface();
    X11CoverSurface(const X11CoverSurface&) = delete;
    X11CoverSurface& operator=(const X11CoverSurface&) = delete;

    xcb_window_t id() const { return window; }

    // Pixels of the screen, from its top left.
    void setHole(const std::optional<PixelRect>& hole);

    // Shows the window with that painting, above all others.
    void show(const CanvasRecording& painting);
    // Shows the painting in the region (pixels of the screen) of a shown window.
    void paint(const CanvasRecording& painting, const QRegion& region);
    // Takes the window off without waiting for anything, because everything is about to be painted anew.
    void vanish();
    // Returns when nothing of the window is on the screen any more, after a bounded wait at the latest.
    void hide();

private:
    enum class Form {
        translucent, // with a compositor: pixels with alpha
        frozen,      // without: painted over a picture of the screen taken when the window is shown
        striped,     // without, and to be looked through: opaque in every second row, live in the others
    };
    struct Look {
        Form form = Form::frozen;
        std::uint8_t depth = 0;
        xcb_visualid_t visual = XCB_NONE;
        QImage::Format imageFormat = QImage::Format_Invalid;
    };

    X11CoverSurface(X11Connection& connection, X11Compositor& compositor, const Place& place,
                    const Look& look);
    bool makeWindow();
    void announce();
    void setShape(xcb_shape_sk_t kind, const QRegion& region);
    QRegion visibleRegion() const;
    std::optional<std::uint32_t> uniformPixel(const CanvasRecording& painting) const;
    void freeze();
    void paintTile(const CanvasRecording& painting, const QRect& tile);
    void put(const QImage& image, QPoint at);
    QRect bounds() const { return {0, 0, place.screen.pixels.width, place.screen.pixels.height}; }

    X11Connection& connection;
    X11Compositor& compositor;
    const Place place;
    const Look look;
    xcb_window_t window = XCB_NONE;
    xcb_gcontext_t context = XCB_NONE;
    xcb_colormap_t colormap = XCB_NONE;
    std::optional<PixelRect> hole;
    QImage frozenScreen;
    bool isShown = false;
};

} // namespace clipwren
