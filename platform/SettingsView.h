#pragma once

#include <functional>
#include <memory>

namespace clipwren {

// The settings window as its owner sees it. Main thread only.
class SettingsView {
public:
    virtual ~SettingsView() = default;

    virtual void makeKeyAndOrderFront() = 0;
    virtual void refreshPermissions() = 0;
    virtual void refreshControls() = 0;
};

class SettingsViews {
public:
    virtual ~SettingsViews() = default;

    // A new window, not yet shown; `onClose` is called once when the user has closed it. Nothing where
    // settings cannot be shown.
    virtual std::unique_ptr<SettingsView> makeSettingsView(std::function<void()> onClose) = 0;
};

} // namespace clipwren
