#include "app/AppDelegate.h"
#include "app/HotKey.h"
#include "app/IconlessMenuItem.h"
#include "base/DecimalText.h"
#include "base/Weakly.h"
#include "capture/ScreenRecorder.h"
#include "encoding/GifEncoder.h"
#include "platform/Application.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/StatusItem.h"
#include "platform/Workspace.h"
#include "settings/SettingsWindow.h"

namespace clipwren {

namespace {

constexpr double sizeIndicatorInterval = 0.75;
constexpr Font sizeIndicatorFont{.size = 12, .weight = FontWeight::medium, .monospacedDigits = true};

// The size shown to the user: one thirty-second of the frames' bytes, near what the GIF will have.
std::string sizeText(std::int64_t byteCount) {
    const double megabytes = static_cast<double>(byteCount) * 0.03125 / (1024.0 * 1024.0);
    return decimalText(megabytes, megabytes < 10.0 ? 1 : 0) + " MB ";
}

} // namespace

void AppDelegate::setupStatusItem() {
    statusItem = platform.statusBar.makeStatusItem();
    const auto action = [this](void (AppDelegate::*operation)()) {
        return weakly(shared_from_this(), [operation](AppDelegate& delegate) { (delegate.*operation)(); });
    };
    auto menu = std::make_shared<Menu>();
    menu->items = {
        MenuItem{.title = "Record Region  (⌘⇧G)", .action = action(&AppDelegate::triggerRecord)},
        MenuItem{.title = "Open GIF Folder", .action = action(&AppDelegate::openFolder)},
        MenuItem{.isSeparator = true},
        IconlessMenuItem("Settings…", action(&AppDelegate::openSettings)),
        MenuItem{.isSeparator = true},
        MenuItem{.title = "Quit Clipwren", .action = action(&AppDelegate::quit), .keyEquivalent = "q"},
    };
    idleMenu = std::move(menu);
    updateIcon();
}

void AppDelegate::updateIcon() {
    if (!statusItem) return;
    const bool isRecording = state == State::recording;
    const char* symbol = state < State::recording ? "record.circle"
                         : isRecording            ? "record.circle.fill"
                                                  : "arrow.triangle.2.circlepath";
    statusItem->setSymbolImage(symbol, "Clipwren");
    statusItem->setContentTint(isRecording ? std::optional(Tint::systemRed) : std::nullopt);
    statusItem->setImagePosition(isRecording ? ImagePosition::imageRight : ImagePosition::imageOnly);
    if (!isRecording) statusItem->setAttributedTitle({});
    applyMenuBarBehavior();
}

void AppDelegate::applyMenuBarBehavior() {
    if (!statusItem) return;
    if (state == State::recording) {
        statusItem->setMenu(nullptr);
        statusItem->setAction(
            weakly(shared_from_this(), [](AppDelegate& delegate) { delegate.stopFromMenuBar(); }));
        statusItem->setToolTip("Stop recording");
    } else {
        statusItem->setAction(nullptr);
        statusItem->setMenu(idleMenu);
        statusItem->setToolTip("Clipwren");
    }
}

void AppDelegate::startSizeIndicator() {
    if (sizeIndicatorTimer) sizeIndicatorTimer->invalidate();
    updateSizeIndicator();
    sizeIndicatorTimer = platform.mainQueue.scheduledTimer(
        sizeIndicatorInterval, weakly(shared_from_this(), [](AppDelegate& delegate) {
            delegate.platform.mainQueue.async(
                weakly(delegate.shared_from_this(), [](AppDelegate& owner) { owner.updateSizeIndicator(); }));
        }));
}

void AppDelegate::updateSizeIndicator() {
    if (state != State::recording || !statusItem) return;
    statusItem->setAttributedTitle({sizeText(recorder ? recorder->byteCount() : 0), sizeIndicatorFont});
}

void AppDelegate::stopFromMenuBar() { stopRecording(); }

void AppDelegate::openFolder() {
    platform.workspace.openFolder(GifEncoder::outputDirectory(platform.folders));
}

void AppDelegate::openSettings() {
    if (!settingsWindow)
        settingsWindow = SettingsWindow::create(
            platform,
            weakly(shared_from_this(), [](AppDelegate& delegate) { delegate.settingsWindow = nullptr; }));
    if (!settingsWindow) {
        platform.log.write("Clipwren: the settings window is not available");
        return;
    }
    platform.application.setActivationPolicy(ActivationPolicy::regular);
    platform.application.activateIgnoringOtherApps();
    settingsWindow->makeKeyAndOrderFront();
    settingsWindow->refreshPermissions();
    settingsWindow->refreshControls();
}

void AppDelegate::quit() { platform.application.terminate(); }

} // namespace clipwren
