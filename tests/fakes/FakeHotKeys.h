#pragma once

#include "platform/HotKeys.h"

#include <map>

namespace clipwren {

// Hot keys that a test presses.
class FakeHotKeys : public HotKeys {
public:
    struct Registration {
        std::uint32_t keyCode = 0;
        std::uint32_t modifiers = 0;
        HotKeyID identifier;
    };

    bool refuses = false;
    int handlerInstallations = 0;
    std::map<HotKeyReference, Registration> registrations;

    void installEventHandler(EventHandler handler) override {
        ++handlerInstallations;
        eventHandler = std::move(handler);
    }
    std::optional<HotKeyReference> registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                                  HotKeyID identifier) override {
        for (const auto& [reference, known] : registrations)
            if (known.keyCode == keyCode && known.modifiers == modifiers) return std::nullopt;
        if (refuses) return std::nullopt;
        registrations[++lastReference] = {keyCode, modifiers, identifier};
        return lastReference;
    }
    void unregisterHotKey(HotKeyReference reference) override { registrations.erase(reference); }

    // An event as the system sends it, whether or not anything is registered for it.
    void sendEvent(std::optional<HotKeyID> identifier) const {
        if (eventHandler) eventHandler(identifier);
    }
    // The user presses a combination. False when nobody has registered it.
    bool press(std::uint32_t keyCode, std::uint32_t modifiers) const {
        for (const auto& [reference, known] : registrations) {
            if (known.keyCode != keyCode || known.modifiers != modifiers) continue;
            sendEvent(known.identifier);
            return true;
        }
        return false;
    }

private:
    EventHandler eventHandler;
    HotKeyReference lastReference = 0;
};

} // namespace clipwren
