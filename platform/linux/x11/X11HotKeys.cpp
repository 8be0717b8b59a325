#include "platform/linux/x11/X11HotKeys.h"

#include "platform/Windows.h"
#include "platform/linux/x11/X11Xkb.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace clipwren {

namespace {

constexpr std::uint8_t eventTypeMask = 0x7F;
// A new layout comes as a burst of notices.
constexpr auto keyboardChangeTime = std::chrono::milliseconds(50);
constexpr auto holdingCheck = std::chrono::milliseconds(30);

// With each of these a press may come.
std::array<std::uint16_t, 4> lockCombinations(const X11Keyboard& keyboard) {
    const std::uint16_t caps = XCB_MOD_MASK_LOCK;
    return {0, caps, keyboard.numLockMask, static_cast<std::uint16_t>(caps | keyboard.numLockMask)};
}

} // namespace

X11HotKeys::X11HotKeys(X11Connection& connection) : connection(connection) {
    // Before anything is read, so that no change is missed.
    selectKeyboardChanges();
    keyboard = X11Keyboard::read(connection);
    keyboardChange.setSingleShot(true);
    keyboardChange.setInterval(keyboardChangeTime);
    QObject::connect(&keyboardChange, &QTimer::timeout, &keyboardChange, [this] { moveToNewKeyboard(); });
    holding.setInterval(holdingCheck);
    QObject::connect(&holding, &QTimer::timeout, &holding, [this] { releaseWhatIsUp(); });
    subscription = connection.subscribe([this](const xcb_generic_event_t& event) { return handle(event); });
}

X11HotKeys::~X11HotKeys() {
    for (const auto& [reference, registration] : registrations)
        ungrab(maskOf(registration.modifiers));
    connection.synchronize();
}

void X11HotKeys::selectKeyboardChanges() {
    xcb_connection_t* raw = connection.raw();
    const auto* extension = xcb_get_extension_data(raw, &xcb_xkb_id);
    if (!extension || !extension->present) return;
    const auto used = owned(xcb_xkb_use_extension_reply(
        raw, xcb_xkb_use_extension(raw, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION), nullptr));
    if (!used || !used->supported) return;
    keyboardEvent = extension->first_event;
    // Repeats of a held key then come without releases in between.
    constexpr std::uint32_t repeat = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    owned(xcb_xkb_per_client_flags_reply(
        raw, xcb_xkb_per_client_flags(raw, XCB_XKB_ID_USE_CORE_KBD, repeat, repeat, 0, 0, 0), nullptr));
    constexpr std::uint16_t changes = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr std::uint16_t mapParts = XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
    xcb_xkb_select_events(raw, XCB_XKB_ID_USE_CORE_KBD, changes, 0, changes, mapParts, mapParts, nullptr);
}

std::uint16_t X11HotKeys::maskOf(std::uint32_t modifiers) const {
    unsigned mask = 0;
    if ((modifiers & HotKeyModifiers::command) != 0) mask |= keyboard.superMask;
    if ((modifiers & HotKeyModifiers::shift) != 0) mask |= XCB_MOD_MASK_SHIFT;
    return static_cast<std::uint16_t>(mask);
}

bool X11HotKeys::grab(std::uint16_t mask) {
    std::array<xcb_void_cookie_t, 4> cookies{};
    const auto locks = lockCombinations(keyboard);
    for (std::size_t i = 0; i < locks.size(); ++i)
        cookies[i] = xcb_grab_key_checked(connection.raw(), false, connection.root(),
                                          static_cast<std::uint16_t>(mask | locks[i]), keyboard.physicalG,
                                          XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    bool isGranted = true;
    for (const xcb_void_cookie_t& cookie : cookies)
        isGranted = !owned(xcb_request_check(connection.raw(), cookie)) && isGranted;
    if (!isGranted) ungrab(mask);
    return isGranted && !connection.isLost();
}

void X11HotKeys::ungrab(std::uint16_t mask) {
    for (const std::uint16_t locks : lockCombinations(keyboard))
        xcb_ungrab_key(connection.raw(), keyboard.physicalG, connection.root(),
                       static_cast<std::uint16_t>(mask | locks));
}

void X11HotKeys::installEventHandler(EventHandler handler) { eventHandler = std::move(handler); }

std::optional<HotKeyReference> X11HotKeys::registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                                          HotKeyID identifier) {
    constexpr std::uint32_t known = HotKeyModifiers::command | HotKeyModifiers::shift;
    if (keyCode != KeyCode::g || (modifiers & ~known) != 0) return std::nullopt;
    for (const auto& [reference, registration] : registrations)
        if (registration.modifiers == modifiers) return std::nullopt;
    if (!grab(maskOf(modifiers))) return std::nullopt;
    registrations[++lastReference] = {.modifiers = modifiers, .identifier = identifier};
    return lastReference;
}

void X11HotKeys::unregisterHotKey(HotKeyReference reference) {
    const auto found = registrations.find(reference);
    if (found == registrations.end()) return;
    ungrab(maskOf(found->second.modifiers));
    connection.synchronize();
    registrations.erase(found);
}

void X11HotKeys::moveToNewKeyboard() {
    for (const auto& [reference, registration] : registrations)
        ungrab(maskOf(registration.modifiers));
    keyboard = X11Keyboard::read(connection);
    for (const auto& [reference, registration] : registrations)
        grab(maskOf(registration.modifiers));
}

bool X11HotKeys::handle(const xcb_generic_event_t& event) {
    const int type = event.response_type & eventTypeMask;
    if (type == XCB_KEY_PRESS) return handlePress(reinterpret_cast<const xcb_key_press_event_t&>(event));
    if (type == XCB_KEY_RELEASE &&
        reinterpret_cast<const xcb_key_release_event_t&>(event).detail == keyboard.physicalG)
        release();
    if (type == XCB_MAPPING_NOTIFY || (keyboardEvent != 0 && type == keyboardEvent)) keyboardChange.start();
    return false;
}

bool X11HotKeys::handlePress(const xcb_key_press_event_t& press) {
    if (press.detail != keyboard.physicalG) return false;
    for (auto& [reference, registration] : registrations) {
        if (keyboard.relevant(press.state) != maskOf(registration.modifiers)) continue;
        if (!registration.isHeld) {
            registration.isHeld = true;
            holding.start();
            const HotKeyID identifier = registration.identifier; // The handler may unregister it.
            if (eventHandler) eventHandler(identifier);
        }
        return true;
    }
    return false;
}

void X11HotKeys::release() {
    holding.stop();
    for (auto& [reference, registration] : registrations)
        registration.isHeld = false;
}

// The release goes to somebody else when a grab of the whole keyboard ends while the key is down.
void X11HotKeys::releaseWhatIsUp() {
    const auto keys =
        owned(xcb_query_keymap_reply(connection.raw(), xcb_query_keymap(connection.raw()), nullptr));
    const int keycode = keyboard.physicalG;
    if (!keys || (keys->keys[keycode / 8] & (1 << (keycode % 8))) == 0) release();
}

} // namespace clipwren
