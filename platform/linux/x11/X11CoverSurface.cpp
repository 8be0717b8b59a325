#include "platform/linux/x11/X11CoverSurface.h"

#include "platform/linux/qt/QtCanvas.h"
#include "platform/linux/x11/X11Compositor.h"

#include <QPainter>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

namespace clipwren {

namespace {

constexpr std::uint8_t alphaDepth = 32;
// Small enough for every server's request size and for a processor's cache.
constexpr int tileBytes = 200'000;
constexpr std::uint32_t eventMask = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                    XCB_EVENT_MASK_BUTTON_1_MOTION | XCB_EVENT_MASK_ENTER_WINDOW;

// The server's pixels as the painter knows them.
QImage::Format opaqueFormat(std::uint8_t depth) {
    switch (depth) {
    case 16: return QImage::Format_RGB16;
    case 24: return QImage::Format_RGB32;
    case 30: return QImage::Format_RGB30;
    default: return QImage::Format_Invalid;
    }
}

xcb_visualid_t findAlphaVisual(const xcb_screen_t& screen) {
    for (auto depth = xcb_screen_allowed_depths_iterator(&screen); depth.rem > 0; xcb_depth_next(&depth)) {
        if (depth.data->depth != alphaDepth) continue;
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem > 0;
             xcb_visualtype_next(&visual))
            if (visual.data->_class == XCB_VISUAL_CLASS_TRUE_COLOR && visual.data->red_mask == 0xFF0000 &&
                visual.data->blue_mask == 0xFF)
                return visual.data->visual_id;
    }
    return XCB_NONE;
}

bool hasServersByteOrder(const xcb_setup_t& setup) {
    return (setup.image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST) ==
           (std::endian::native == std::endian::little);
}

QRect toQt(const PixelRect& rect) { return {rect.x, rect.y, rect.width, rect.height}; }

std::uint32_t pixelOf(const Color& color) {
    QImage image(1, 1, QImage::Format_ARGB32_Premultiplied);
    image.fill(0);
    QPainter painter(&image);
    QtCanvas(painter, 1, {}).fill(std::array{Rect{0, 0, 1, 1}}, WindingRule::nonZero, color);
    painter.end();
    return *reinterpret_cast<const std::uint32_t*>(image.constScanLine(0));
}

} // namespace

std::unique_ptr<X11CoverSurface> X11CoverSurface::create(X11Connection& connection, X11Compositor& compositor,
                                                         const Place& place) {
    const xcb_query_extension_reply_t* shape = xcb_get_extension_data(connection.raw(), &xcb_shape_id);
    if (!shape || !shape->present || !hasServersByteOrder(*xcb_get_setup(connection.raw()))) return nullptr;
    const xcb_visualid_t alphaVisual = findAlphaVisual(connection.screen());
    Look look;
    if (compositor.isRunning() && alphaVisual != XCB_NONE)
        look = {Form::translucent, alphaDepth, alphaVisual, QImage::Format_ARGB32_Premultiplied};
    else
        look = {place.ignoresMouseEvents ? Form::striped : Form::frozen, connection.screen().root_depth,
                connection.screen().root_visual, opaqueFormat(connection.screen().root_depth)};
    if (look.imageFormat == QImage::Format_Invalid) return nullptr;
    std::unique_ptr<X11CoverSurface> surface(new X11CoverSurface(connection, compositor, place, look));
    return surface->makeWindow() ? std::move(surface) : nullptr;
}

X11CoverSurface::X11CoverSurface(X11Connection& connection, X11Compositor& compositor, const Place& place,
                                 const Look& look)
    : connection(connection),
      compositor(compositor),
      place(place),
      look(look) {}

X11CoverSurface::~X11CoverSurface() {
    hide();
    xcb_connection_t* raw = connection.raw();
    if (context != XCB_NONE) xcb_free_gc(raw, context);
    if (window != XCB_NONE) xcb_destroy_window(raw, window);
    if (colormap != XCB_NONE) xcb_free_colormap(raw, colormap);
}

bool X11CoverSurface::makeWindow() {
    xcb_connection_t* raw = connection.raw();
    const PixelRect& pixels = place.screen.pixels;
    colormap = xcb_generate_id(raw);
    xcb_create_colormap(raw, XCB_COLORMAP_ALLOC_NONE, colormap, connection.root(), look.visual);
    xcb_create_window_value_list_t values{};
    // A frozen window without a background shows, until it is painted, what is there already.
    const std::uint32_t background = look.form == Form::frozen ? XCB_CW_BACK_PIXMAP : XCB_CW_BACK_PIXEL;
    values.background_pixmap = XCB_BACK_PIXMAP_NONE;
    values.background_pixel = look.form == Form::translucent ? 0 : connection.screen().black_pixel;
    values.override_redirect = 1;
    values.event_mask = eventMask;
    values.colormap = colormap;
    window = xcb_generate_id(raw);
    const xcb_void_cookie_t created = xcb_create_window_aux_checked(
        raw, look.depth, window, connection.root(), static_cast<std::int16_t>(pixels.x),
        static_cast<std::int16_t>(pixels.y), static_cast<std::uint16_t>(pixels.width),
        static_cast<std::uint16_t>(pixels.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, look.visual,
        background | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP,
        &values);
    if (owned(xcb_request_check(raw, created)) || connection.isLost()) {
        window = XCB_NONE;
        return false;
    }
    context = xcb_generate_id(raw);
    xcb_create_gc(raw, context, window, 0, nullptr);
    announce();
    if (place.ignoresMouseEvents) setShape(XCB_SHAPE_SK_INPUT, {});
    return true;
}

// What keeps window managers and compositors from shading, animating, listing or skipping the window.
void X11CoverSurface::announce() {
    const auto set = [&](std::string_view property, xcb_atom_t type, std::uint32_t value) {
        xcb_change_property(connection.raw(), XCB_PROP_MODE_REPLACE, window, connection.atom(property), type,
                            32, 1, &value);
    };
    const auto setText = [&](xcb_atom_t property, xcb_atom_t type, std::string_view text) {
        xcb_change_property(connection.raw(), XCB_PROP_MODE_REPLACE, window, property, type, 8,
                            static_cast<std::uint32_t>(text.size()), text.data());
    };
    using namespace std::string_view_literals;
    setText(XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, "clipwren\0Clipwren\0"sv);
    setText(connection.atom("_NET_WM_NAME"), connection.atom("UTF8_STRING"), "Clipwren"sv);
    set("_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, connection.atom("_NET_WM_WINDOW_TYPE_NOTIFICATION"));
    set("_COMPTON_SHADOW", XCB_ATOM_CARDINAL, 0);
    set("_NET_WM_BYPASS_COMPOSITOR", XCB_ATOM_CARDINAL, 2);
}

void X11CoverSurface::setShape(xcb_shape_sk_t kind, const QRegion& region) {
    std::vector<xcb_rectangle_t> rectangles;
    for (const QRect& rect : region)
        rectangles.push_back({static_cast<std::int16_t>(rect.x()), static_cast<std::int16_t>(rect.y()),
                              static_cast<std::uint16_t>(rect.width()),
                              static_cast<std::uint16_t>(rect.height())});
    xcb_shape_rectangles(connection.raw(), XCB_SHAPE_SO_SET, kind, XCB_CLIP_ORDERING_YX_BANDED, window, 0, 0,
                         static_cast<std::uint32_t>(rectangles.size()), rectangles.data());
}

QRegion X11CoverSurface::visibleRegion() const {
    QRegion region = bounds();
    if (look.form == Form::striped) {
        std::vector<QRect> rows;
        for (int y = 0; y < bounds().height(); y += 2)
            rows.emplace_back(0, y, bounds().width(), 1);
        region.setRects(rows.data(), static_cast<int>(rows.size()));
    }
    return hole ? region - toQt(*hole) : region;
}

void X11CoverSurface::setHole(const std::optional<PixelRect>& newHole) {
    hole = newHole;
    if (isShown) setShape(XCB_SHAPE_SK_BOUNDING, visibleRegion());
}

std::optional<std::uint32_t> X11CoverSurface::uniformPixel(const CanvasRecording& painting) const {
    const bool hasWholeBytes =
        look.imageFormat == QImage::Format_ARGB32_Premultiplied || look.imageFormat == QImage::Format_RGB32;
    if (look.form == Form::frozen || !hasWholeBytes) return std::nullopt;
    const NativeScreen& screen = place.screen;
    std::optional<Rect> exempt;
    if (hole)
        exempt = Rect{hole->x / screen.scale, screen.frame.height - hole->maxY() / screen.scale,
                      hole->width / screen.scale, hole->height / screen.scale};
    const std::optional<Color> color = painting.uniformColor(screen.localBounds(), exempt);
    if (!color) return std::nullopt;
    if (look.form == Form::translucent) return pixelOf(*color);
    // The live rows between the stripes stand for the transparency.
    return pixelOf({color->red, color->green, color->blue, 1});
}

void X11CoverSurface::freeze() {
    const PixelRect& pixels = place.screen.pixels;
    xcb_connection_t* raw = connection.raw();
    auto reply = owned(xcb_get_image_reply(
        raw,
        xcb_get_image(raw, XCB_IMAGE_FORMAT_Z_PIXMAP, connection.root(), static_cast<std::int16_t>(pixels.x),
                      static_cast<std::int16_t>(pixels.y), static_cast<std::uint16_t>(pixels.width),
                      static_cast<std::uint16_t>(pixels.height), ~0u),
        nullptr));
    frozenScreen = {};
    if (!reply) return;
    const QPixelFormat format = QImage::toPixelFormat(look.imageFormat);
    const int rowBytes = (pixels.width * format.bitsPerPixel() + 31) / 32 * 4;
    if (std::int64_t{rowBytes} * pixels.height > std::int64_t{xcb_get_image_data_length(reply.get())}) return;
    // The image lives in the reply, which goes away with it.
    auto* memory = reply.release();
    frozenScreen = QImage(xcb_get_image_data(memory), pixels.width, pixels.height, rowBytes, look.imageFormat,
                          std::free, memory);
}

void X11CoverSurface::show(const CanvasRecording& painting) {
    if (isShown) return;
    isShown = true;
    xcb_connection_t* raw = connection.raw();
    if (look.form == Form::frozen) freeze();
    setShape(XCB_SHAPE_SK_BOUNDING, visibleRegion());
    const auto uniform = uniformPixel(painting);
    if (uniform) xcb_change_window_attributes(raw, window, XCB_CW_BACK_PIXEL, &*uniform);
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(raw, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    xcb_map_window(raw, window);
    if (!uniform) paint(painting, bounds());
    // Only now: what mapping has exposed is painted already.
    const std::uint32_t withExposure = eventMask | XCB_EVENT_MASK_EXPOSURE;
    xcb_change_window_attributes(raw, window, XCB_CW_EVENT_MASK, &withExposure);
    xcb_flush(raw);
}

void X11CoverSurface::paint(const CanvasRecording& painting, const QRegion& region) {
    xcb_connection_t* raw = connection.raw();
    const QRegion visible = region & visibleRegion().boundingRect();
    if (const auto uniform = uniformPixel(painting)) {
        xcb_change_window_attributes(raw, window, XCB_CW_BACK_PIXEL, &*uniform);
        for (const QRect& rect : visible)
            xcb_clear_area(raw, false, window, static_cast<std::int16_t>(rect.x()),
                           static_cast<std::int16_t>(rect.y()), static_cast<std::uint16_t>(rect.width()),
                           static_cast<std::uint16_t>(rect.height()));
        return;
    }
    for (const QRect& rect : visible) {
        const int rows = std::max(tileBytes / (rect.width() * 4), 1);
        for (int y = rect.top(); y <= rect.bottom(); y += rows)
            paintTile(painting, {rect.x(), y, rect.width(), std::min(rows, rect.bottom() + 1 - y)});
    }
}

void X11CoverSurface::paintTile(const CanvasRecording& painting, const QRect& tile) {
    QImage image;
    if (!frozenScreen.isNull()) {
        image = frozenScreen.copy(tile);
    } else {
        image = QImage(tile.size(), look.imageFormat);
        image.fill(look.form == Form::translucent ? Qt::transparent : Qt::black);
    }
    QPainter painter(&image);
    painter.translate(-tile.topLeft());
    painter.scale(place.screen.scale, place.screen.scale);
    painting.replay(painter, place.screen.frame.height);
    painter.end();
    put(image, tile.topLeft());
}

void X11CoverSurface::put(const QImage& image, QPoint at) {
    const int rows = std::max(tileBytes / static_cast<int>(image.bytesPerLine()), 1);
    for (int y = 0; y < image.height(); y += rows) {
        const int height = std::min(rows, image.height() - y);
        xcb_put_image(connection.raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, window, context,
                      static_cast<std::uint16_t>(image.width()), static_cast<std::uint16_t>(height),
                      static_cast<std::int16_t>(at.x()), static_cast<std::int16_t>(at.y() + y), 0, look.depth,
                      static_cast<std::uint32_t>(image.bytesPerLine()) * static_cast<std::uint32_t>(height),
                      image.constScanLine(y));
    }
}

void X11CoverSurface::vanish() {
    if (!std::exchange(isShown, false)) return;
    frozenScreen = {};
    setShape(XCB_SHAPE_SK_BOUNDING, {});
    xcb_unmap_window(connection.raw(), window);
    xcb_flush(connection.raw());
}

void X11CoverSurface::hide() {
    if (!isShown) return;
    isShown = false;
    xcb_connection_t* raw = connection.raw();
    // What the window leaves behind stays on the screen until those below have painted.
    if (!frozenScreen.isNull()) put(frozenScreen, {0, 0});
    frozenScreen = {};
    // A compositor may fade a window out that is unmapped; one without a shape is gone at once.
    const QRegion area = visibleRegion().translated(place.screen.pixels.x, place.screen.pixels.y);
    compositor.changeAndAwaitRepaint(area, [&] { setShape(XCB_SHAPE_SK_BOUNDING, {}); });
    xcb_change_window_attributes(raw, window, XCB_CW_EVENT_MASK, &eventMask);
    xcb_unmap_window(raw, window);
    connection.synchronize();
}

} // namespace clipwren
