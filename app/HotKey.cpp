#include "app/HotKey.h"

#include "base/FatalError.h"
#include "platform/MainQueue.h"

#include <limits>
#include <utility>

namespace clipwren {

namespace {

constexpr std::uint32_t signature = 'C' << 24 | 'W' << 16 | 'R' << 8 | 'N';

} // namespace

HotKey::Shared HotKey::shared;

std::unique_ptr<HotKey> HotKey::create(HotKeys& hotKeys, MainQueue& mainQueue, std::uint32_t keyCode,
                                       std::uint32_t modifiers, std::function<void()> handler) {
    installHandlerIfNeeded(hotKeys, mainQueue);
    if (shared.nextID == std::numeric_limits<std::uint32_t>::max())
        fatalError("no hot key identifier is left");
    const std::uint32_t id = shared.nextID++;
    shared.handlers[id] = std::move(handler);

    std::unique_ptr<HotKey> hotKey(new HotKey(hotKeys, id));
    hotKey->ref = hotKeys.registerHotKey(keyCode, modifiers, {signature, id});
    if (!hotKey->ref) return nullptr; // Its destruction forgets the closure.
    return hotKey;
}

HotKey::~HotKey() {
    if (ref) hotKeys.unregisterHotKey(*ref);
    shared.handlers.erase(id);
}

void HotKey::resetSharedState() { shared = {}; }

void HotKey::installHandlerIfNeeded(HotKeys& hotKeys, MainQueue& mainQueue) {
    if (std::exchange(shared.handlerInstalled, true)) return;
    hotKeys.installEventHandler([&mainQueue](std::optional<HotKeyID> identifier) {
        // The signature is not compared: the identifier alone selects the closure.
        if (!identifier) return;
        const auto found = shared.handlers.find(identifier->id);
        if (found != shared.handlers.end()) mainQueue.async(found->second);
    });
}

} // namespace clipwren
