#pragma once

#include "platform/Platform.h"
#include "platform/SettingsView.h"

#include <functional>
#include <memory>
#include <string>

namespace clipwren {

class ActivationObserver;

// The settings window: the screen-recording permission, the recording settings, launch at login, and which
// build this is. Every control writes through at once. It also finishes the road to the permission: once the
// user has asked for it here and comes back with it granted, the program restarts itself. Main thread only.
class SettingsWindow : public SettingsViewDelegate, public std::enable_shared_from_this<SettingsWindow> {
public:
    // Not yet shown. `onClose` is called when the user has closed the window, and may drop it; without one
    // the program stops. Nothing where windows cannot be shown. The ports outlive the window.
    static std::shared_ptr<SettingsWindow> create(const Platform& platform, std::function<void()> onClose);
    ~SettingsWindow() override;

    void makeKeyAndOrderFront();

    // Bring the controls in line with the system and with what is stored; at any time.
    void refreshPermissions();
    void refreshControls();

    void enableClicked() override;
    // The popups' choices are stored; a popup without a selection stores nothing.
    void fpsChanged() override;
    void resolutionChanged() override;
    void durationChanged() override;
    // A change that fails shows as the box springing back.
    void launchAtLoginChanged() override;
    // Asks first. The permission is not touched.
    void resetAllClicked() override;
    void windowWillClose() override;

    // The user is back from another program.
    void appBecameActive();

    // Version, build and date of the running program in one line.
    static std::string buildIdentifier(const Application& application);

    // Ends this process; a new one starts once it is gone.
    static void relaunchApp(Application& application);

private:
    SettingsWindow(const Platform& platform, std::function<void()> onClose);
    bool isPermissionGranted() const;

    const Platform& platform;
    std::function<void()> onClose;
    std::unique_ptr<SettingsView> window;
    std::unique_ptr<ActivationObserver> activationObserver;
    bool didClickEnable = false; // until the relaunch is started
};

} // namespace clipwren
