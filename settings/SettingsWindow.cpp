#include "settings/SettingsWindow.h"

#include "base/FatalError.h"
#include "base/LocalTime.h"
#include "base/Weakly.h"
#include "platform/Alerts.h"
#include "platform/Application.h"
#include "platform/LoginItem.h"
#include "platform/ScreenCapture.h"
#include "platform/Store.h"
#include "settings/LaunchAtLogin.h"
#include "settings/Preferences.h"

#include <algorithm>
#include <utility>

namespace clipwren {

namespace {

template <typename Setting>
SettingsPopupRow popupRow(std::string text) {
    SettingsPopupRow row{std::move(text), {}};
    for (const Setting setting : allCases<Setting>)
        row.items.push_back(label(setting));
    return row;
}

SettingsContent settingsContent() {
    return {
        .title = "Settings",
        .heading = "Welcome to Clipwren",
        .permissionsTitle = "PERMISSIONS",
        .permissionLabel = "Screen Recording",
        .enableTitle = "Enable…",
        .recordingTitle = "RECORDING",
        .popups = {popupRow<RecordingFPS>("Frame rate"), popupRow<RecordingResolution>("Resolution"),
                   popupRow<MaxDuration>("Auto-stop")},
        .generalTitle = "GENERAL",
        .launchAtLoginTitle = "Launch Clipwren at login",
        .aboutTitle = "ABOUT",
        .resetTitle = "Reset All Settings",
    };
}

template <typename Setting>
void show(Setting setting, SettingsPopup popup, SettingsView& view) {
    const auto& cases = allCases<Setting>;
    view.selectItem(popup, static_cast<int>(std::find(cases.begin(), cases.end(), setting) - cases.begin()));
}

template <typename Setting>
void storeSelection(SettingsPopup popup, std::string_view key, const SettingsView& view, Store& store) {
    const auto& cases = allCases<Setting>;
    const int index = view.indexOfSelectedItem(popup);
    if (index < 0 || index >= static_cast<int>(cases.size())) return;
    store.setInteger(key, rawValue(cases[static_cast<std::size_t>(index)]));
}

} // namespace

std::shared_ptr<SettingsWindow> SettingsWindow::create(const Platform& platform,
                                                       std::function<void()> onClose) {
    if (!onClose) fatalError("a settings window needs to tell that it is closed");
    std::shared_ptr<SettingsWindow> self(new SettingsWindow(platform, std::move(onClose)));
    if (!self->window) return nullptr;
    self->window->setDelegate(self);
    self->refreshPermissions();
    self->refreshControls();
    self->activationObserver = platform.application.observeDidBecomeActive(
        weakly(self, [](SettingsWindow& window) { window.appBecameActive(); }));
    return self;
}

SettingsWindow::SettingsWindow(const Platform& platform, std::function<void()> onClose)
    : platform(platform),
      onClose(std::move(onClose)),
      window(platform.settingsViews.makeSettingsView(settingsContent())) {}

SettingsWindow::~SettingsWindow() = default;

void SettingsWindow::makeKeyAndOrderFront() { window->makeKeyAndOrderFront(); }

bool SettingsWindow::isPermissionGranted() const {
    return platform.screenCapture.permission() == CapturePermission::granted;
}

void SettingsWindow::refreshPermissions() {
    const bool isGranted = isPermissionGranted();
    if (isGranted)
        window->setPermissionIcon("checkmark.circle.fill", "Granted", SymbolTint::systemGreen);
    else
        window->setPermissionIcon("xmark.circle.fill", "Missing", SymbolTint::systemRed);
    window->setEnableButtonHidden(isGranted);
}

void SettingsWindow::refreshControls() {
    show(Preferences::fps(platform.store), SettingsPopup::fps, *window);
    show(Preferences::resolution(platform.store), SettingsPopup::resolution, *window);
    show(Preferences::maxDuration(platform.store), SettingsPopup::duration, *window);
    window->setLaunchAtLogin(LaunchAtLogin::isEnabled(platform.loginItem));
    window->setAboutText(buildIdentifier(platform.application));
}

void SettingsWindow::enableClicked() {
    didClickEnable = true;
    platform.screenCapture.requestPermission();
}

void SettingsWindow::fpsChanged() {
    storeSelection<RecordingFPS>(SettingsPopup::fps, Preferences::fpsKey, *window, platform.store);
}

void SettingsWindow::resolutionChanged() {
    storeSelection<RecordingResolution>(SettingsPopup::resolution, Preferences::resolutionKey, *window,
                                        platform.store);
}

void SettingsWindow::durationChanged() {
    storeSelection<MaxDuration>(SettingsPopup::duration, Preferences::maxDurationKey, *window,
                                platform.store);
}

void SettingsWindow::launchAtLoginChanged() {
    LaunchAtLogin::setEnabled(window->launchAtLogin(), platform.loginItem, platform.log);
    window->setLaunchAtLogin(LaunchAtLogin::isEnabled(platform.loginItem));
}

void SettingsWindow::resetAllClicked() {
    const int answer = platform.alerts.runModal(
        {.messageText = "Reset all settings?",
         .informativeText =
             "Frame rate, resolution, auto-stop, and launch-at-login return to defaults. Screen "
             "Recording permission is not affected.",
         .style = AlertStyle::warning,
         .buttons = {"Reset", "Cancel"}});
    if (answer != 0) return;
    if (platform.application.bundleFacts().identifier) platform.store.removeAll();
    LaunchAtLogin::setEnabled(false, platform.loginItem, platform.log);
    refreshControls();
}

void SettingsWindow::appBecameActive() {
    refreshPermissions();
    refreshControls();
    // Only what was asked for here restarts the program; a permission granted by other means does not.
    if (didClickEnable && isPermissionGranted()) {
        didClickEnable = false;
        relaunchApp(platform.application);
    }
}

void SettingsWindow::windowWillClose() {
    platform.application.setActivationPolicy(ActivationPolicy::accessory);
    onClose();
}

std::string SettingsWindow::buildIdentifier(const Application& application) {
    const BundleFacts facts = application.bundleFacts();
    const std::string date = facts.executableModificationTime
                                 ? dateText(*facts.executableModificationTime, "yyyy-MM-dd HH:mm")
                                 : "?";
    return "Clipwren v" + facts.shortVersion.value_or("0.0.0") + " (build " + facts.version.value_or("?") +
           ") · " + date;
}

void SettingsWindow::relaunchApp(Application& application) {
    application.startShellCommand("while kill -0 " + std::to_string(application.processIdentifier()) +
                                  " 2>/dev/null; do sleep 0.1; done; sleep 0.2; " +
                                  application.launchCommand());
    application.terminate();
}

} // namespace clipwren
