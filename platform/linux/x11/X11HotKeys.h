#pragma once

#include "platform/HotKeys.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Keyboard.h"

#include <QTimer>

#include <map>
#include <optional>

namespace clipwren {

// Hot keys as passive key grabs on the root window, with any state of Caps Lock and Num Lock. They also work
// while this program itself has the keyboard. After a change of the keyboard mapping they move along. Main
// thread only.
//
// Knows the G key and the modifiers `command` (Super) and `shift`; everything else is refused.
class X11HotKeys final : public HotKeys {
public:
    // The connection outlives this object.
    explicit X11HotKeys(X11Connection& connection);
    ~X11HotKeys() override;

    void installEventHandler(EventHandler handler) override;
    std::optional<HotKeyReference> registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                                  HotKeyID identifier) override;
    void unregisterHotKey(HotKeyReference reference) override;

private:
    struct Registration {
        std::uint32_t modifiers = 0;
        HotKeyID identifier;
        bool isHeld = false;
    };

    std::uint16_t maskOf(std::uint32_t modifiers) const;
    bool grab(std::uint16_t mask);
    void ungrab(std::uint16_t mask);
    void moveToNewKeyboard();
    void selectKeyboardChanges();
    bool handle(const xcb_generic_event_t& event);
    bool handlePress(const xcb_key_press_event_t& press);
    void release();
    void releaseWhatIsUp();

    X11Connection& connection;
    X11Keyboard keyboard;
    std::uint8_t keyboardEvent = 0; // of XKB; 0 without
    std::map<HotKeyReference, Registration> registrations;
    HotKeyReference lastReference = 0;
    EventHandler eventHandler;
    QTimer keyboardChange;
    QTimer holding;
    X11Connection::Subscription subscription;
};

} // namespace clipwren
