#pragma once

#include "platform/SettingsView.h"

#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace clipwren {

// A settings window that shows nothing, in which the test plays the user.
struct FakeSettingsViewState {
    SettingsContent content;
    std::weak_ptr<SettingsViewDelegate> delegate;
    bool exists = true;
    int orderedFront = 0;
    std::string permissionSymbol;
    std::string permissionDescription;
    SymbolTint permissionTint = SymbolTint::systemRed;
    bool isEnableButtonHidden = false;
    std::array<int, 3> selected{-1, -1, -1}; // by popup
    bool isLaunchAtLoginOn = false;
    std::string aboutText;
    int permissionUpdates = 0; // how often the icon was set
    int controlUpdates = 0;    // how often the about text was set

    int selectedIn(SettingsPopup popup) const { return selected[static_cast<std::size_t>(popup)]; }

    // The user picks an item; -1 stands for none.
    void choose(SettingsPopup popup, int index) {
        selected[static_cast<std::size_t>(popup)] = index;
        const auto user = delegate.lock();
        if (!user) return;
        switch (popup) {
        case SettingsPopup::fps: return user->fpsChanged();
        case SettingsPopup::resolution: return user->resolutionChanged();
        case SettingsPopup::duration: return user->durationChanged();
        }
    }
    void switchLaunchAtLogin(bool isOn) {
        isLaunchAtLoginOn = isOn;
        if (const auto user = delegate.lock()) user->launchAtLoginChanged();
    }
    // A button that is hidden cannot be clicked.
    void clickEnable() {
        if (const auto user = isEnableButtonHidden ? nullptr : delegate.lock()) user->enableClicked();
    }
    void clickReset() {
        if (const auto user = delegate.lock()) user->resetAllClicked();
    }
    void close() {
        if (const auto user = delegate.lock()) user->windowWillClose();
    }
};

class FakeSettingsViews : public SettingsViews {
public:
    bool isAvailable = true;
    std::vector<std::shared_ptr<FakeSettingsViewState>> made;

    std::unique_ptr<SettingsView> makeSettingsView(const SettingsContent& content) override {
        if (!isAvailable) return nullptr;
        made.push_back(std::make_shared<FakeSettingsViewState>());
        made.back()->content = content;
        return std::make_unique<View>(made.back());
    }

private:
    class View : public SettingsView {
    public:
        explicit View(std::shared_ptr<FakeSettingsViewState> state) : state(std::move(state)) {}
        ~View() override { state->exists = false; }
        void setDelegate(const std::weak_ptr<SettingsViewDelegate>& delegate) override {
            state->delegate = delegate;
        }
        void makeKeyAndOrderFront() override { ++state->orderedFront; }
        void setPermissionIcon(const std::string& symbolName, const std::string& accessibilityDescription,
                               SymbolTint tint) override {
            state->permissionSymbol = symbolName;
            state->permissionDescription = accessibilityDescription;
            state->permissionTint = tint;
            ++state->permissionUpdates;
        }
        void setEnableButtonHidden(bool isHidden) override { state->isEnableButtonHidden = isHidden; }
        void selectItem(SettingsPopup popup, int index) override {
            state->selected[static_cast<std::size_t>(popup)] = index;
        }
        int indexOfSelectedItem(SettingsPopup popup) const override { return state->selectedIn(popup); }
        void setLaunchAtLogin(bool isOn) override { state->isLaunchAtLoginOn = isOn; }
        bool launchAtLogin() const override { return state->isLaunchAtLoginOn; }
        void setAboutText(const std::string& text) override {
            state->aboutText = text;
            ++state->controlUpdates;
        }

    private:
        std::shared_ptr<FakeSettingsViewState> state;
    };
};

} // namespace clipwren
