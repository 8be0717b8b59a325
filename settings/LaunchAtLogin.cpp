#include "settings/LaunchAtLogin.h"

#include "platform/Log.h"
#include "platform/LoginItem.h"

namespace clipwren {

bool LaunchAtLogin::isEnabled(const LoginItem& loginItem) {
    return loginItem.status() == LoginItemStatus::enabled;
}

void LaunchAtLogin::setEnabled(bool isEnabled, LoginItem& loginItem, Log& log) {
    // A reset must not fail for an item that was never set.
    if (!isEnabled && loginItem.status() == LoginItemStatus::notRegistered) return;
    const auto result = isEnabled ? loginItem.registerItem() : loginItem.unregisterItem();
    if (!result) log.write("Clipwren: launch-at-login toggle failed: " + result.error().localizedDescription);
}

} // namespace clipwren
