#pragma once

#include "platform/Application.h"

namespace clipwren {

// The program as Qt shows it. X11 desktops know no policy of a whole program: a window that is to have a
// taskbar entry has one while it is open, so the policy needs nothing done.
class QtApplication : public Application {
public:
    void setActivationPolicy(ActivationPolicy policy) override;
    void activateIgnoringOtherApps() override;
    void terminate() override;
    std::unique_ptr<ActivationObserver> observeDidBecomeActive(std::function<void()> handler) override;
    BundleFacts bundleFacts() const override;
    std::int32_t processIdentifier() const override;
    std::string launchCommand() const override;
    void startShellCommand(const std::string& command) override;
};

} // namespace clipwren
