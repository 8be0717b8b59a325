#include "platform/linux/x11/X11Keyboard.h"

#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Xkb.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace clipwren {

namespace {

constexpr xcb_keysym_t escapeSymbol = 0xFF1B;
constexpr xcb_keysym_t numLockSymbol = 0xFF7F;
constexpr xcb_keysym_t superLeftSymbol = 0xFFEB;
constexpr xcb_keysym_t superRightSymbol = 0xFFEC;

// Keycodes of every evdev keyboard, for a server that does not tell the keys' names.
constexpr xcb_keycode_t usualG = 42;
constexpr xcb_keycode_t usualEscape = 9;

// The keycode of the key with that XKB name, by its position; 0 when there is none.
class KeyNames {
public:
    explicit KeyNames(xcb_connection_t* connection) {
        const auto* extension = xcb_get_extension_data(connection, &xcb_xkb_id);
        if (!extension || !extension->present) return;
        reply = owned(xcb_xkb_get_names_reply(
            connection, xcb_xkb_get_names(connection, XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_NAME_DETAIL_KEY_NAMES),
            nullptr));
        if (!reply) return;
        const void* values = xcb_xkb_get_names_value_list(reply.get());
        xcb_xkb_get_names_value_list_unpack(values, reply->nTypes, reply->indicators, reply->virtualMods,
                                            reply->groupNames, reply->nKeys, reply->nKeyAliases,
                                            reply->nRadioGroups, reply->which, &list);
    }

    xcb_keycode_t find(std::string_view wanted) const {
        if (!reply || !list.keyNames) return 0;
        for (int i = 0; i < reply->nKeys; ++i) {
            const char* name = list.keyNames[i].name;
            const std::string_view padded(name, sizeof list.keyNames[i].name);
            if (padded.substr(0, padded.find('\0')) == wanted)
                return static_cast<xcb_keycode_t>(reply->firstKey + i);
        }
        return 0;
    }

private:
    X11Reply<xcb_xkb_get_names_reply_t> reply;
    xcb_xkb_get_names_value_list_t list{};
};

} // namespace

bool X11Keyboard::isEscape(xcb_keycode_t keycode) const {
    return std::find(escapes.begin(), escapes.end(), keycode) != escapes.end();
}

X11Keyboard X11Keyboard::read(X11Connection& connection) {
    xcb_connection_t* raw = connection.raw();
    X11Keyboard keyboard;
    const KeyNames names(raw);
    const auto orElse = [](xcb_keycode_t found, xcb_keycode_t usual) { return found != 0 ? found : usual; };
    keyboard.physicalG = orElse(names.find("AC05"), usualG);
    keyboard.escapes.push_back(orElse(names.find("ESC"), usualEscape));

    const xcb_setup_t& setup = *xcb_get_setup(raw);
    const auto mapping = owned(xcb_get_keyboard_mapping_reply(
        raw,
        xcb_get_keyboard_mapping(raw, setup.min_keycode,
                                 static_cast<std::uint8_t>(setup.max_keycode - setup.min_keycode + 1)),
        nullptr));
    const auto symbolsOf = [&](int keycode) -> std::span<const xcb_keysym_t> {
        if (!mapping || keycode < setup.min_keycode) return {};
        const auto each = std::size_t{mapping->keysyms_per_keycode};
        const auto first = static_cast<std::size_t>(keycode - setup.min_keycode) * each;
        const auto all = static_cast<std::size_t>(xcb_get_keyboard_mapping_keysyms_length(mapping.get()));
        if (first + each > all) return {};
        return {xcb_get_keyboard_mapping_keysyms(mapping.get()) + first, each};
    };
    const auto means = [&](int keycode, xcb_keysym_t symbol) {
        const auto symbols = symbolsOf(keycode);
        return std::find(symbols.begin(), symbols.end(), symbol) != symbols.end();
    };
    for (int keycode = setup.min_keycode; keycode <= setup.max_keycode; ++keycode) {
        const auto symbols = symbolsOf(keycode);
        if (!symbols.empty() && symbols[0] == escapeSymbol)
            keyboard.escapes.push_back(static_cast<xcb_keycode_t>(keycode));
    }

    const auto modifiers = owned(xcb_get_modifier_mapping_reply(raw, xcb_get_modifier_mapping(raw), nullptr));
    if (modifiers) {
        const xcb_keycode_t* keycodes = xcb_get_modifier_mapping_keycodes(modifiers.get());
        const int each = modifiers->keycodes_per_modifier;
        for (int i = 0; i < 8 * each; ++i) {
            if (keycodes[i] == 0) continue;
            const auto mask = static_cast<std::uint16_t>(1 << (i / each));
            if (means(keycodes[i], superLeftSymbol) || means(keycodes[i], superRightSymbol))
                keyboard.superMask |= mask;
            if (means(keycodes[i], numLockSymbol)) keyboard.numLockMask |= mask;
        }
    }
    // One modifier, and none that also means something else.
    if (keyboard.superMask == 0 || (keyboard.superMask & (keyboard.superMask - 1)) != 0 ||
        (keyboard.superMask & (XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_LOCK | XCB_MOD_MASK_CONTROL)) != 0)
        keyboard.superMask = XCB_MOD_MASK_4;
    if (keyboard.numLockMask == keyboard.superMask) keyboard.numLockMask = 0;
    return keyboard;
}

} // namespace clipwren
