#pragma once

#include "platform/LoginItem.h"

#include <filesystem>

namespace clipwren {

// The login item as an XDG autostart entry of the user's: present means enabled, absent not registered. An
// entry that the user has hidden or disabled in the desktop's settings requires approval; one that starts no
// program that exists is not found.
class XdgLoginItem : public LoginItem {
public:
    // The user's configuration folder, and the program to start at login.
    XdgLoginItem(const std::filesystem::path& configuration, std::filesystem::path program);

    LoginItemStatus status() const override;
    Expected<void, PlatformError> registerItem() override;
    Expected<void, PlatformError> unregisterItem() override;

private:
    const std::filesystem::path entry;
    const std::filesystem::path program;
};

} // namespace clipwren
