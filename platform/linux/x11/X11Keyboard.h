#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <vector>

namespace clipwren {

class X11Connection;

// What the program needs to know of the keyboard; read anew after a change of the keyboard mapping.
struct X11Keyboard {
    // All modifiers that key events tell.
    static constexpr std::uint16_t modifierMask = 0xFF;

    xcb_keycode_t physicalG = 0;        // the key where a US keyboard has its G, whatever the layout
    std::vector<xcb_keycode_t> escapes; // every key that means Escape by layout or by position
    std::uint16_t superMask = 0;
    std::uint16_t numLockMask = 0; // 0 when no modifier is Num Lock

    bool isEscape(xcb_keycode_t keycode) const;

    // The modifiers of an event without the locks, which do not matter.
    std::uint16_t relevant(std::uint16_t eventState) const {
        return eventState & modifierMask & static_cast<std::uint16_t>(~(XCB_MOD_MASK_LOCK | numLockMask));
    }

    // Asks the server. On a lost connection the usual values.
    static X11Keyboard read(X11Connection& connection);
};

} // namespace clipwren
