#pragma once

#include <memory>
#include <string>
#include <vector>

namespace clipwren {

enum class SettingsPopup { fps = 0, resolution = 1, duration = 2 };

enum class SymbolTint { systemGreen, systemRed };

// One row with a popup: its label, and the items in their order.
struct SettingsPopupRow {
    std::string label;
    std::vector<std::string> items;
};

// Everything in the settings window that stays as it is while it is open. From top to bottom: the heading;
// a section with the permission's row (icon and button at its right edge); a section with the popups; a
// section with the check box; a section with the about text; the reset button at the bottom right.
struct SettingsContent {
    std::string title; // of the window
    std::string heading;
    std::string permissionsTitle;
    std::string permissionLabel;
    std::string enableTitle;
    std::string recordingTitle;
    std::vector<SettingsPopupRow> popups; // in the order of SettingsPopup
    std::string generalTitle;
    std::string launchAtLoginTitle;
    std::string aboutTitle;
    std::string resetTitle;
};

// What the user does in the window. Never called for changes that the program makes itself. Main thread.
class SettingsViewDelegate {
public:
    virtual ~SettingsViewDelegate() = default;

    virtual void enableClicked() = 0;
    virtual void fpsChanged() = 0;
    virtual void resolutionChanged() = 0;
    virtual void durationChanged() = 0;
    virtual void launchAtLoginChanged() = 0;
    virtual void resetAllClicked() = 0;
    // Once, when the user closes the window.
    virtual void windowWillClose() = 0;
};

// The settings window: it shows what it is told and reports what the user does. Fixed size, centred on the
// screen. Main thread only. Destroying it takes it down, which may happen inside a call to its delegate.
class SettingsView {
public:
    virtual ~SettingsView() = default;

    // Held weakly; set before the window is shown.
    virtual void setDelegate(const std::weak_ptr<SettingsViewDelegate>& delegate) = 0;

    virtual void makeKeyAndOrderFront() = 0;

    // The description is only for those who hear the window instead of seeing it. An unknown symbol leaves
    // the row without a picture.
    virtual void setPermissionIcon(const std::string& symbolName, const std::string& accessibilityDescription,
                                   SymbolTint tint) = 0;
    virtual void setEnableButtonHidden(bool isHidden) = 0;

    virtual void selectItem(SettingsPopup popup, int index) = 0;
    // -1 where none is selected.
    virtual int indexOfSelectedItem(SettingsPopup popup) const = 0;

    virtual void setLaunchAtLogin(bool isOn) = 0;
    virtual bool launchAtLogin() const = 0;

    virtual void setAboutText(const std::string& text) = 0;
};

class SettingsViews {
public:
    virtual ~SettingsViews() = default;

    // A new window, not yet shown. Nothing where windows cannot be shown.
    virtual std::unique_ptr<SettingsView> makeSettingsView(const SettingsContent& content) = 0;
};

} // namespace clipwren
