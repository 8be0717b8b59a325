#pragma once

#include "base/Expected.h"
#include "platform/PlatformError.h"

namespace clipwren {

// `requiresApproval`: registered, but the user has switched it off in the desktop's own settings. `notFound`:
// there is no place where the program could be registered.
enum class LoginItemStatus { notRegistered = 0, enabled = 1, requiresApproval = 2, notFound = 3 };

// The desktop's registration of this program as one that is started at login. Nothing is cached: every
// question sees what is registered at that moment. Main thread only.
class LoginItem {
public:
    virtual ~LoginItem() = default;

    virtual LoginItemStatus status() const = 0;

    // Afterwards this program, where it lies now, is started at every login. An older registration is
    // replaced, one that was switched off too.
    virtual Expected<void, PlatformError> registerItem() = 0;

    // Afterwards this program is not started at login.
    virtual Expected<void, PlatformError> unregisterItem() = 0;
};

} // namespace clipwren
