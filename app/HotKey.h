#pragma once

#include "platform/HotKeys.h"

#include <functional>
#include <memory>
#include <unordered_map>

namespace clipwren {

class MainQueue;

// One system-wide keyboard shortcut; lives as long as the object. Main thread only.
class HotKey {
public:
    // Registers the combination; nothing when the system refuses it. The handler runs on the main thread once
    // a press, always deferred through the main queue. The ports are those of the process: every hot key is
    // made with the same.
    static std::unique_ptr<HotKey> create(HotKeys& hotKeys, MainQueue& mainQueue, std::uint32_t keyCode,
                                          std::uint32_t modifiers, std::function<void()> handler);
    ~HotKey();
    HotKey(const HotKey&) = delete;
    HotKey& operator=(const HotKey&) = delete;

    // Makes the class as it is in a new process: for tests that live through several.
    static void resetSharedState();

private:
    // What all hot keys of the process share. Identifiers are never used twice, nor those of failed
    // registrations again.
    struct Shared {
        bool handlerInstalled = false;
        std::uint32_t nextID = 1;
        std::unordered_map<std::uint32_t, std::function<void()>> handlers;
    };
    static Shared shared;

    HotKey(HotKeys& hotKeys, std::uint32_t id) : hotKeys(hotKeys), id(id) {}
    static void installHandlerIfNeeded(HotKeys& hotKeys, MainQueue& mainQueue);

    HotKeys& hotKeys;
    std::optional<HotKeyReference> ref;
    const std::uint32_t id;
};

} // namespace clipwren
