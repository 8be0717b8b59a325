#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace clipwren {

// Modifier mask bits of a hot key. `command` is the key that the desktop uses for its own shortcuts.
struct HotKeyModifiers {
    static constexpr std::uint32_t command = 0x100;
    static constexpr std::uint32_t shift = 0x200;
};

struct HotKeyID {
    std::uint32_t signature = 0; // a four-character code, first character in the most significant byte
    std::uint32_t id = 0;
    friend bool operator==(const HotKeyID&, const HotKeyID&) = default;
};

// A live registration; opaque to the core.
using HotKeyReference = std::uint64_t;

// System-wide keyboard shortcuts. Main thread only.
class HotKeys {
public:
    // Called once a press with the identifier of the registration, or none when it could not be read. Repeats
    // of a held key are not presses. Runs on the main thread.
    using EventHandler = std::function<void(std::optional<HotKeyID>)>;

    virtual ~HotKeys() = default;

    // The one handler of the process; it stays installed.
    virtual void installEventHandler(EventHandler handler) = 0;

    // Nothing when the combination is taken or cannot be watched here.
    virtual std::optional<HotKeyReference> registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                                          HotKeyID identifier) = 0;
    virtual void unregisterHotKey(HotKeyReference reference) = 0;
};

} // namespace clipwren
