#pragma once

#include "platform/SettingsView.h"

namespace clipwren {

class QtSettingsWindow;

// The settings window in Qt's widgets.
class QtSettingsView : public SettingsView {
public:
    explicit QtSettingsView(const SettingsContent& content);
    ~QtSettingsView() override;

    void setDelegate(const std::weak_ptr<SettingsViewDelegate>& delegate) override;
    void makeKeyAndOrderFront() override;
    void setPermissionIcon(const std::string& symbolName, const std::string& accessibilityDescription,
                           SymbolTint tint) override;
    void setEnableButtonHidden(bool isHidden) override;
    void selectItem(SettingsPopup popup, int index) override;
    int indexOfSelectedItem(SettingsPopup popup) const override;
    void setLaunchAtLogin(bool isOn) override;
    bool launchAtLogin() const override;
    void setAboutText(const std::string& text) override;

private:
    QtSettingsWindow* window; // may outlive this, hidden and silent, until its event is over
};

class QtSettingsViews : public SettingsViews {
public:
    std::unique_ptr<SettingsView> makeSettingsView(const SettingsContent& content) override;
};

} // namespace clipwren
