#include "platform/linux/status/TrayWindow.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace clipwren {

namespace {

constexpr std::uint8_t eventTypeMask = 0x7F;
constexpr int firstSide = 22;

template <typename Event>
const Event& as(const xcb_generic_event_t& event) {
    return reinterpret_cast<const Event&>(event);
}

struct Visual {
    xcb_visualid_t id = 0;
    std::uint8_t depth = 0;
};

// The visual that the tray asks for if it has alpha, otherwise that of the root window: only a window of its
// parent's depth can let it shine through.
Visual chooseVisual(const xcb_screen_t& screen, xcb_visualid_t wanted) {
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0; xcb_depth_next(&depths)) {
        if (depths.data->depth != 32) continue;
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0;
             xcb_visualtype_next(&visuals))
            if (visuals.data->visual_id == wanted) return {wanted, 32};
    }
    return {screen.root_visual, screen.root_depth};
}

struct Formats {
    xcb_render_pictformat_t ofVisual = 0;
    xcb_render_pictformat_t argb = 0;
};

Formats findFormats(xcb_connection_t* connection, xcb_visualid_t visual) {
    Formats found;
    const auto reply = owned(
        xcb_render_query_pict_formats_reply(connection, xcb_render_query_pict_formats(connection), nullptr));
    if (!reply) return found;
    for (auto formats = xcb_render_query_pict_formats_formats_iterator(reply.get()); formats.rem > 0;
         xcb_render_pictforminfo_next(&formats)) {
        const auto& info = *formats.data;
        if (info.depth == 32 && info.direct.alpha_mask == 0xFF && info.direct.alpha_shift == 24 &&
            info.direct.red_shift == 16 && info.direct.green_shift == 8 && info.direct.blue_shift == 0)
            found.argb = info.id;
    }
    for (auto screens = xcb_render_query_pict_formats_screens_iterator(reply.get()); screens.rem > 0;
         xcb_render_pictscreen_next(&screens))
        for (auto depths = xcb_render_pictscreen_depths_iterator(screens.data); depths.rem > 0;
             xcb_render_pictdepth_next(&depths))
            for (auto visuals = xcb_render_pictdepth_visuals_iterator(depths.data); visuals.rem > 0;
                 xcb_render_pictvisual_next(&visuals))
                if (visuals.data->visual == visual) found.ofVisual = visuals.data->format;
    return found;
}

} // namespace

TrayWindow::TrayWindow(X11Connection& connection, SystemTray& tray, const std::string& name,
                       std::function<void(Event)> handler)
    : connection(connection),
      handler(std::move(handler)),
      currentSize(firstSide, firstSide) {
    xcb_connection_t* raw = connection.raw();
    const Visual visual = chooseVisual(connection.screen(), tray.visual());
    depth = visual.depth;
    const Formats formats = findFormats(raw, visual.id);
    windowFormat = formats.ofVisual;
    argbFormat = formats.argb;

    window = xcb_generate_id(raw);
    colormap = xcb_generate_id(raw);
    xcb_create_colormap(raw, XCB_COLORMAP_ALLOC_NONE, colormap, connection.root(), visual.id);
    // Override-redirect: no window manager frames it in the moment in which a dying panel leaves it behind.
    const xcb_create_window_value_list_t values{
        .background_pixmap = XCB_BACK_PIXMAP_PARENT_RELATIVE,
        .background_pixel = 0,
        .border_pixel = 0,
        .override_redirect = 1,
        .event_mask = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                      XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_ENTER_WINDOW | XCB_EVENT_MASK_LEAVE_WINDOW,
        .colormap = colormap,
    };
    const std::uint32_t background = hasAlpha() ? XCB_CW_BACK_PIXEL : XCB_CW_BACK_PIXMAP;
    xcb_create_window_aux(raw, depth, window, connection.root(), 0, 0, firstSide, firstSide, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, visual.id,
                          background | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK |
                              XCB_CW_COLORMAP,
                          &values);
    subscription = connection.subscribe([this](const xcb_generic_event_t& event) { return handle(event); });
    setProperties(name);
    tray.dock(window);
}

TrayWindow::~TrayWindow() {
    xcb_destroy_window(connection.raw(), window);
    xcb_free_colormap(connection.raw(), colormap);
    xcb_flush(connection.raw());
}

void TrayWindow::setProperties(const std::string& name) {
    xcb_connection_t* raw = connection.raw();
    const auto setText = [&](xcb_atom_t property, xcb_atom_t type, const std::string& text) {
        xcb_change_property(raw, XCB_PROP_MODE_REPLACE, window, property, type, 8,
                            static_cast<std::uint32_t>(text.size()), text.data());
    };
    setText(XCB_ATOM_WM_NAME, XCB_ATOM_STRING, name);
    setText(connection.atom("_NET_WM_NAME"), connection.atom("UTF8_STRING"), name);
    using namespace std::string_literals;
    setText(XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, "clipwren\0Clipwren\0"s);
    // Version 0 of the protocol; the tray is to map the window.
    constexpr std::array<std::uint32_t, 2> embedding{0, 1};
    const xcb_atom_t information = connection.atom("_XEMBED_INFO");
    xcb_change_property(raw, XCB_PROP_MODE_REPLACE, window, information, information, 32, embedding.size(),
                        embedding.data());
    setWantedWidth(firstSide);
}

void TrayWindow::setWantedWidth(int width) {
    // WM_SIZE_HINTS: flags, then at the sixth and seventh place the smallest width and height.
    constexpr std::uint32_t hasMinimum = 1U << 4;
    std::array<std::uint32_t, 18> hints{hasMinimum};
    hints[5] = static_cast<std::uint32_t>(width);
    // Some trays take the two as a proportion.
    hints[6] = static_cast<std::uint32_t>(currentSize.height());
    xcb_change_property(connection.raw(), XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NORMAL_HINTS,
                        XCB_ATOM_WM_SIZE_HINTS, 32, hints.size(), hints.data());
}

QRect TrayWindow::geometry() const {
    xcb_connection_t* raw = connection.raw();
    const auto origin = owned(xcb_translate_coordinates_reply(
        raw, xcb_translate_coordinates(raw, window, connection.root(), 0, 0), nullptr));
    return origin ? QRect(QPoint(origin->dst_x, origin->dst_y), currentSize) : QRect(QPoint(), currentSize);
}

void TrayWindow::show(const QImage& picture) {
    if (windowFormat == 0 || argbFormat == 0) return;
    xcb_connection_t* raw = connection.raw();
    const auto width = static_cast<std::uint16_t>(picture.width());
    const auto height = static_cast<std::uint16_t>(picture.height());

    const xcb_pixmap_t pixmap = xcb_generate_id(raw);
    xcb_create_pixmap(raw, 32, pixmap, window, width, height);
    const xcb_gcontext_t context = xcb_generate_id(raw);
    xcb_create_gc(raw, context, pixmap, 0, nullptr);
    xcb_put_image(raw, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context, width, height, 0, 0, 0, 32,
                  static_cast<std::uint32_t>(picture.sizeInBytes()), picture.constBits());
    const xcb_render_picture_t source = xcb_generate_id(raw);
    const xcb_render_picture_t target = xcb_generate_id(raw);
    xcb_render_create_picture(raw, source, pixmap, argbFormat, 0, nullptr);
    xcb_render_create_picture(raw, target, window, windowFormat, 0, nullptr);
    if (!hasAlpha()) xcb_clear_area(raw, false, window, 0, 0, 0, 0);
    xcb_render_composite(raw, hasAlpha() ? XCB_RENDER_PICT_OP_SRC : XCB_RENDER_PICT_OP_OVER, source, XCB_NONE,
                         target, 0, 0, 0, 0, 0, 0, width, height);
    xcb_render_free_picture(raw, target);
    xcb_render_free_picture(raw, source);
    xcb_free_gc(raw, context);
    xcb_free_pixmap(raw, pixmap);
}

std::optional<double> TrayWindow::backgroundLightness() {
    if (!docked) return std::nullopt;
    xcb_connection_t* raw = connection.raw();
    // The picture leaves the corner free. Through a window with alpha the panel is seen only on the screen.
    const QPoint corner = hasAlpha() ? geometry().topLeft() : QPoint();
    if (!hasAlpha()) xcb_clear_area(raw, false, window, 0, 0, 0, 0);
    const auto picture = owned(xcb_get_image_reply(
        raw,
        xcb_get_image(raw, XCB_IMAGE_FORMAT_Z_PIXMAP, hasAlpha() ? connection.root() : window,
                      static_cast<std::int16_t>(corner.x()), static_cast<std::int16_t>(corner.y()), 1, 1,
                      ~0U),
        nullptr));
    if (!picture || xcb_get_image_data_length(picture.get()) < 4) return std::nullopt;
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, xcb_get_image_data(picture.get()), sizeof pixel);
    const double red = (pixel >> 16 & 0xFF) / 255.0, green = (pixel >> 8 & 0xFF) / 255.0;
    return 0.299 * red + 0.587 * green + 0.114 * (pixel & 0xFF) / 255.0;
}

void TrayWindow::tell(Event event) {
    // The handler may destroy this object and with it the function itself.
    const auto call = handler;
    call(event);
}

bool TrayWindow::handle(const xcb_generic_event_t& event) {
    switch (event.response_type & eventTypeMask) {
    case XCB_EXPOSE: {
        const auto& exposed = as<xcb_expose_event_t>(event);
        if (exposed.window != window) return false;
        if (exposed.count == 0) tell(Event::exposed);
        return true;
    }
    case XCB_CONFIGURE_NOTIFY: {
        const auto& configured = as<xcb_configure_notify_event_t>(event);
        if (configured.window != window) return false;
        const QSize size(configured.width, configured.height);
        if (std::exchange(currentSize, size) != size) tell(Event::resized);
        return true;
    }
    case XCB_REPARENT_NOTIFY: {
        const auto& reparented = as<xcb_reparent_notify_event_t>(event);
        if (reparented.window != window) return false;
        const bool wasDocked = std::exchange(docked, reparented.parent != connection.root());
        if (wasDocked && !docked) tell(Event::thrownOut);
        return true;
    }
    case XCB_BUTTON_PRESS: {
        const auto& press = as<xcb_button_press_event_t>(event);
        if (press.event != window) return false;
        // The wheel is no click.
        if (press.detail > XCB_BUTTON_INDEX_3) return true;
        // The press has grabbed the pointer for this connection; a menu needs the grab for its own.
        const auto ungrab = xcb_ungrab_pointer_checked(connection.raw(), press.time);
        owned(xcb_request_check(connection.raw(), ungrab));
        tell(Event::pressed);
        return true;
    }
    case XCB_ENTER_NOTIFY:
    case XCB_LEAVE_NOTIFY: {
        const auto& crossing = as<xcb_enter_notify_event_t>(event);
        if (crossing.event != window) return false;
        const bool entered = (crossing.response_type & eventTypeMask) == XCB_ENTER_NOTIFY;
        tell(entered ? Event::entered : Event::left);
        return true;
    }
    default: return false;
    }
}

} // namespace clipwren
