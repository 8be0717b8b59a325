#include "platform/linux/x11/X11Reply.h"
#include "tests/conformance/SyntheticInput.h"

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <cstring>

namespace clipwren {

SyntheticInput::SyntheticInput() : connection(xcb_connect(nullptr, nullptr)) {
    const auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    rootWindow = screens.data->root;
}

SyntheticInput::~SyntheticInput() { xcb_disconnect(connection); }

void SyntheticInput::fake(std::uint8_t type, std::uint8_t detail, int x, int y) {
    xcb_test_fake_input(connection, type, detail, XCB_CURRENT_TIME, rootWindow, static_cast<std::int16_t>(x),
                        static_cast<std::int16_t>(y), 0);
    owned(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

void SyntheticInput::moveTo(int x, int y) { fake(XCB_MOTION_NOTIFY, 0, x, y); }
void SyntheticInput::press(std::uint8_t button) { fake(XCB_BUTTON_PRESS, button, 0, 0); }
void SyntheticInput::release(std::uint8_t button) { fake(XCB_BUTTON_RELEASE, button, 0, 0); }
void SyntheticInput::keyDown(std::uint8_t keycode) { fake(XCB_KEY_PRESS, keycode, 0, 0); }
void SyntheticInput::keyUp(std::uint8_t keycode) { fake(XCB_KEY_RELEASE, keycode, 0, 0); }

void SyntheticInput::tap(std::uint8_t keycode) {
    keyDown(keycode);
    keyUp(keycode);
}

std::vector<std::uint32_t> SyntheticInput::look(const PixelRect& rect) {
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(rect.area()));
    const auto reply = owned(xcb_get_image_reply(
        connection,
        xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, rootWindow, static_cast<std::int16_t>(rect.x),
                      static_cast<std::int16_t>(rect.y), static_cast<std::uint16_t>(rect.width),
                      static_cast<std::uint16_t>(rect.height), ~0u),
        nullptr));
    if (reply) std::memcpy(pixels.data(), xcb_get_image_data(reply.get()), pixels.size() * 4);
    for (std::uint32_t& pixel : pixels)
        pixel |= 0xFF000000u;
    return pixels;
}

std::uint32_t SyntheticInput::focusedWindow() {
    const auto reply = owned(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    return reply ? reply->focus : 0;
}

} // namespace clipwren
