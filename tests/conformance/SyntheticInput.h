#pragma once

#include "base/Geometry.h"

#include <cstdint>
#include <string>
#include <vector>

struct xcb_connection_t;

namespace clipwren {

// A user's hands and eyes at the X server that DISPLAY names, on a connection of their own. Positions are
// pixels of the root window. Every operation returns when the server has done it.
class SyntheticInput {
public:
    SyntheticInput();
    ~SyntheticInput();
    SyntheticInput(const SyntheticInput&) = delete;
    SyntheticInput& operator=(const SyntheticInput&) = delete;

    static constexpr std::uint8_t primaryButton = 1;

    void moveTo(int x, int y);
    void press(std::uint8_t button = primaryButton);
    void release(std::uint8_t button = primaryButton);

    // Keycodes of the server's keyboard, as every evdev keyboard has them.
    static constexpr std::uint8_t escape = 9;
    static constexpr std::uint8_t physicalG = 42;
    static constexpr std::uint8_t physicalH = 43;
    static constexpr std::uint8_t shiftLeft = 50;
    static constexpr std::uint8_t capsLock = 66;
    static constexpr std::uint8_t numLock = 77;
    static constexpr std::uint8_t superLeft = 133;

    void keyDown(std::uint8_t keycode);
    void keyUp(std::uint8_t keycode);
    void tap(std::uint8_t keycode);

    // What the screen shows, as 0xFFRRGGBB, row by row.
    std::vector<std::uint32_t> look(const PixelRect& rect);
    std::uint32_t look(int x, int y) { return look({x, y, 1, 1}).front(); }

    std::uint32_t focusedWindow();

    // For what else a test wants to ask the server.
    xcb_connection_t* raw() const { return connection; }
    std::uint32_t root() const { return rootWindow; }

private:
    void fake(std::uint8_t type, std::uint8_t detail, int x, int y);

    xcb_connection_t* connection;
    std::uint32_t rootWindow = 0;
};

} // namespace clipwren
