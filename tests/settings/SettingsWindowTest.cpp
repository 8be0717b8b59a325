#include "settings/SettingsWindow.h"

#include "settings/Preferences.h"
#include "tests/fakes/FakePlatform.h"

#include <gtest/gtest.h>

namespace clipwren {
namespace {

struct SettingsWindowTest : testing::Test {
    FakePlatform platform;
    int closeCount = 0;
    std::shared_ptr<SettingsWindow> window;
    std::shared_ptr<FakeSettingsViewState> view;

    void open() {
        window = SettingsWindow::create(platform.ports, [this] {
            ++closeCount;
            window = nullptr;
        });
        view = platform.settingsViews.made.back();
    }
    std::vector<int> selected() const { return {view->selected.begin(), view->selected.end()}; }
};

using Strings = std::vector<std::string>;

TEST_F(SettingsWindowTest, NamesEverythingInIt) {
    open();
    const SettingsContent& content = view->content;
    EXPECT_EQ(content.title, "Settings");
    EXPECT_EQ(content.heading, "Welcome to Clipwren");
    EXPECT_EQ(content.permissionsTitle, "PERMISSIONS");
    EXPECT_EQ(content.permissionLabel, "Screen Recording");
    EXPECT_EQ(content.enableTitle, "Enable\u2026");
    EXPECT_EQ(content.recordingTitle, "RECORDING");
    ASSERT_EQ(content.popups.size(), 3u);
    EXPECT_EQ(content.popups[0].label, "Frame rate");
    EXPECT_EQ(content.popups[0].items, (Strings{"10 fps", "15 fps", "20 fps", "24 fps", "30 fps"}));
    EXPECT_EQ(content.popups[1].label, "Resolution");
    EXPECT_EQ(content.popups[1].items,
              (Strings{"480 px wide", "600 px wide", "800 px wide", "1200 px wide", "1600 px wide"}));
    EXPECT_EQ(content.popups[2].label, "Auto-stop");
    EXPECT_EQ(content.popups[2].items, (Strings{"15 seconds", "30 seconds", "60 seconds", "No limit"}));
    EXPECT_EQ(content.generalTitle, "GENERAL");
    EXPECT_EQ(content.launchAtLoginTitle, "Launch Clipwren at login");
    EXPECT_EQ(content.aboutTitle, "ABOUT");
    EXPECT_EQ(content.resetTitle, "Reset All Settings");
}

TEST_F(SettingsWindowTest, IsFilledWhenMadeButNotShown) {
    platform.store.values = {
        {"recording.fps", 24}, {"recording.resolution", 1600}, {"recording.maxDuration", 60}};
    platform.loginItem.current = LoginItemStatus::enabled;
    open();
    EXPECT_EQ(selected(), (std::vector{3, 4, 2}));
    EXPECT_TRUE(view->isLaunchAtLoginOn);
    EXPECT_EQ(view->aboutText, "Clipwren v1.2.0 (build 7) · 2025-03-14 09:26");
    EXPECT_EQ(view->permissionUpdates, 1);
    EXPECT_EQ(view->orderedFront, 0);
    EXPECT_EQ(platform.application.policy, ActivationPolicy::accessory);
    window->makeKeyAndOrderFront();
    EXPECT_EQ(view->orderedFront, 1);
}

TEST_F(SettingsWindowTest, ThereIsNoneWhereWindowsCannotBeShown) {
    platform.settingsViews.isAvailable = false;
    EXPECT_EQ(SettingsWindow::create(platform.ports, [] {}), nullptr);
}

TEST_F(SettingsWindowTest, WithoutAnOwnerToTellTheProgramStops) {
    EXPECT_DEATH(SettingsWindow::create(platform.ports, nullptr), "closed");
}

TEST_F(SettingsWindowTest, AGrantedPermissionIsAGreenMarkAndNothingToAsk) {
    open();
    EXPECT_EQ(view->permissionSymbol, "checkmark.circle.fill");
    EXPECT_EQ(view->permissionDescription, "Granted");
    EXPECT_EQ(view->permissionTint, SymbolTint::systemGreen);
    EXPECT_TRUE(view->isEnableButtonHidden);
}

TEST_F(SettingsWindowTest, AMissingPermissionIsARedCrossAndAButton) {
    for (const auto permission : {CapturePermission::askable, CapturePermission::denied}) {
        platform.screenCapture.currentPermission = permission;
        open();
        EXPECT_EQ(view->permissionSymbol, "xmark.circle.fill");
        EXPECT_EQ(view->permissionDescription, "Missing");
        EXPECT_EQ(view->permissionTint, SymbolTint::systemRed);
        EXPECT_FALSE(view->isEnableButtonHidden);
    }
}

TEST_F(SettingsWindowTest, ThePermissionIsReadAnewAtEachRefresh) {
    open();
    platform.screenCapture.currentPermission = CapturePermission::askable;
    window->refreshPermissions();
    EXPECT_EQ(view->permissionDescription, "Missing");
    EXPECT_FALSE(view->isEnableButtonHidden);
    platform.screenCapture.currentPermission = CapturePermission::granted;
    window->refreshPermissions();
    EXPECT_EQ(view->permissionDescription, "Granted");
    EXPECT_TRUE(view->isEnableButtonHidden);
}

TEST_F(SettingsWindowTest, EveryChoiceStoresItsRawValueAtOnce) {
    open();
    const auto stored = [this](std::string_view key) { return platform.store.integer(key); };
    for (int i = 0; i < 5; ++i) {
        view->choose(SettingsPopup::fps, i);
        EXPECT_EQ(stored("recording.fps"), (std::vector{10, 15, 20, 24, 30})[static_cast<std::size_t>(i)]);
        view->choose(SettingsPopup::resolution, i);
        EXPECT_EQ(stored("recording.resolution"),
                  (std::vector{480, 600, 800, 1200, 1600})[static_cast<std::size_t>(i)]);
    }
    for (int i = 0; i < 4; ++i) {
        view->choose(SettingsPopup::duration, i);
        EXPECT_EQ(stored("recording.maxDuration"), (std::vector{15, 30, 60, 0})[static_cast<std::size_t>(i)]);
    }
    EXPECT_EQ(platform.store.values.size(), 3u);
}

TEST_F(SettingsWindowTest, AChoiceOutsideTheListStoresNothing) {
    open();
    for (const auto& [popup, end] :
         {std::pair(SettingsPopup::fps, 5), std::pair(SettingsPopup::resolution, 5),
          std::pair(SettingsPopup::duration, 4)}) {
        view->choose(popup, -1);
        view->choose(popup, end);
    }
    EXPECT_TRUE(platform.store.values.empty());
}

TEST_F(SettingsWindowTest, NoLimitIsStoredAsZeroAndComesBack) {
    open();
    view->choose(SettingsPopup::duration, 3);
    ASSERT_TRUE(platform.store.contains("recording.maxDuration"));
    EXPECT_EQ(platform.store.integer("recording.maxDuration"), 0);
    view->close();
    open();
    EXPECT_EQ(view->selectedIn(SettingsPopup::duration), 3);
}

TEST_F(SettingsWindowTest, UnknownStoredNumbersShowAsDefaultsAndStay) {
    platform.store.values = {
        {"recording.fps", 25}, {"recording.resolution", 1024}, {"recording.maxDuration", 45}};
    const auto before = platform.store.values;
    open();
    window->refreshControls();
    EXPECT_EQ(selected(), (std::vector{1, 2, 1}));
    view->close();
    EXPECT_EQ(platform.store.values, before);
}

TEST_F(SettingsWindowTest, TheCheckBoxRegistersAndUnregisters) {
    open();
    view->switchLaunchAtLogin(true);
    EXPECT_EQ(platform.loginItem.current, LoginItemStatus::enabled);
    EXPECT_TRUE(view->isLaunchAtLoginOn);
    view->switchLaunchAtLogin(false);
    EXPECT_EQ(platform.loginItem.current, LoginItemStatus::notRegistered);
    EXPECT_FALSE(view->isLaunchAtLoginOn);
    EXPECT_TRUE(platform.log.lines().empty());
}

TEST_F(SettingsWindowTest, TheCheckBoxSpringsBackWhenTheChangeFails) {
    platform.loginItem.refusal = PlatformError{"The folder is read-only."};
    open();
    view->switchLaunchAtLogin(true);
    EXPECT_FALSE(view->isLaunchAtLoginOn);
    platform.loginItem.current = LoginItemStatus::enabled;
    view->switchLaunchAtLogin(false);
    EXPECT_TRUE(view->isLaunchAtLoginOn);
    EXPECT_EQ(platform.log.lines().size(), 2u);
    EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(SettingsWindowTest, ResettingAsksFirst) {
    open();
    view->clickReset();
    ASSERT_EQ(platform.alerts.shown.size(), 1u);
    const Alert& alert = platform.alerts.shown[0];
    EXPECT_EQ(alert.messageText, "Reset all settings?");
    EXPECT_EQ(alert.informativeText, "Frame rate, resolution, auto-stop, and launch-at-login return to "
                                     "defaults. Screen Recording permission is not affected.");
    EXPECT_EQ(alert.style, AlertStyle::warning);
    EXPECT_EQ(alert.buttons, (Strings{"Reset", "Cancel"}));
}

TEST_F(SettingsWindowTest, ResettingRemovesAllThatIsStoredAndTheLoginItem) {
    platform.store.values = {{"recording.fps", 30},
                             {"recording.resolution", 480},
                             {"recording.maxDuration", 0},
                             {"something.else", 1}};
    platform.loginItem.current = LoginItemStatus::enabled;
    open();
    view->clickReset();
    EXPECT_TRUE(platform.store.values.empty());
    EXPECT_EQ(platform.loginItem.current, LoginItemStatus::notRegistered);
    EXPECT_EQ(selected(), (std::vector{1, 2, 1}));
    EXPECT_FALSE(view->isLaunchAtLoginOn);
    EXPECT_EQ(platform.screenCapture.permissionRequests, 0);
}

TEST_F(SettingsWindowTest, CancellingAResetChangesNothing) {
    platform.store.values = {{"recording.fps", 30}};
    platform.loginItem.current = LoginItemStatus::enabled;
    platform.alerts.answer = 1;
    open();
    view->clickReset();
    EXPECT_EQ(platform.store.values.size(), 1u);
    EXPECT_EQ(platform.loginItem.current, LoginItemStatus::enabled);
    EXPECT_EQ(selected(), (std::vector{4, 2, 1}));
}

TEST_F(SettingsWindowTest, WithoutAnIdentifierAResetKeepsTheStore) {
    platform.application.facts.identifier = std::nullopt;
    platform.store.values = {{"recording.fps", 30}};
    platform.loginItem.current = LoginItemStatus::enabled;
    open();
    platform.store.values["recording.resolution"] = 480;
    view->clickReset();
    EXPECT_EQ(platform.store.values.size(), 2u);
    EXPECT_EQ(platform.loginItem.current, LoginItemStatus::notRegistered);
    EXPECT_EQ(selected(), (std::vector{4, 0, 1}));
}

TEST_F(SettingsWindowTest, SurvivesBeingClosedWhileItAsks) {
    platform.loginItem.current = LoginItemStatus::enabled;
    open();
    platform.alerts.whileShown = [this] { view->close(); };
    view->clickReset();
    EXPECT_EQ(platform.loginItem.current, LoginItemStatus::notRegistered);
    EXPECT_EQ(closeCount, 1);
    EXPECT_FALSE(view->exists);
}

TEST_F(SettingsWindowTest, AskingForThePermissionAsksTheSystemAndWaits) {
    platform.screenCapture.currentPermission = CapturePermission::askable;
    open();
    view->clickEnable();
    EXPECT_EQ(platform.screenCapture.permissionRequests, 1);
    EXPECT_EQ(view->permissionDescription, "Missing");
    EXPECT_FALSE(platform.application.isTerminated);
}

TEST_F(SettingsWindowTest, APermissionAskedForHereRestartsTheProgramOnce) {
    platform.screenCapture.currentPermission = CapturePermission::askable;
    open();
    view->clickEnable();
    platform.application.becomeActive();
    EXPECT_TRUE(platform.application.shellCommands.empty());
    EXPECT_FALSE(platform.application.isTerminated);

    platform.screenCapture.currentPermission = CapturePermission::granted;
    platform.application.becomeActive();
    EXPECT_EQ(platform.application.shellCommands,
              Strings{"while kill -0 4711 2>/dev/null; do sleep 0.1; done; sleep 0.2; exec '/opt/clipwren'"});
    EXPECT_TRUE(platform.application.isTerminated);
    platform.application.becomeActive();
    EXPECT_EQ(platform.application.shellCommands.size(), 1u);
}

TEST_F(SettingsWindowTest, APermissionGrantedElsewhereOnlyShows) {
    platform.screenCapture.currentPermission = CapturePermission::askable;
    open();
    platform.screenCapture.currentPermission = CapturePermission::granted;
    platform.store.values["recording.fps"] = 10;
    platform.application.becomeActive();
    EXPECT_EQ(view->permissionDescription, "Granted");
    EXPECT_EQ(selected(), (std::vector{0, 2, 1}));
    EXPECT_FALSE(platform.application.isTerminated);
}

TEST_F(SettingsWindowTest, ClosingForgetsThatThePermissionWasAskedFor) {
    platform.screenCapture.currentPermission = CapturePermission::askable;
    open();
    view->clickEnable();
    view->close();
    platform.screenCapture.currentPermission = CapturePermission::granted;
    platform.application.becomeActive();
    open();
    platform.application.becomeActive();
    EXPECT_FALSE(platform.application.isTerminated);
    EXPECT_TRUE(platform.application.shellCommands.empty());
}

TEST_F(SettingsWindowTest, ClosingTakesTheProgramOutOfTheTaskbarAndTellsTheOwner) {
    open();
    platform.application.policy = ActivationPolicy::regular;
    view->close();
    EXPECT_EQ(platform.application.policy, ActivationPolicy::accessory);
    EXPECT_EQ(closeCount, 1);
    EXPECT_FALSE(view->exists);
}

TEST_F(SettingsWindowTest, ADroppedWindowListensNoMore) {
    open();
    const int before = view->permissionUpdates;
    window = nullptr;
    platform.application.becomeActive();
    EXPECT_EQ(view->permissionUpdates, before);
    EXPECT_EQ(closeCount, 0);
}

TEST_F(SettingsWindowTest, TheBuildLineSaysWhatIsKnown) {
    auto& facts = platform.application.facts;
    EXPECT_EQ(SettingsWindow::buildIdentifier(platform.application),
              "Clipwren v1.2.0 (build 7) \u00b7 2025-03-14 09:26");
    facts.shortVersion = facts.version = std::nullopt;
    EXPECT_EQ(SettingsWindow::buildIdentifier(platform.application),
              "Clipwren v0.0.0 (build ?) \u00b7 2025-03-14 09:26");
    facts.executableModificationTime = std::nullopt;
    EXPECT_EQ(SettingsWindow::buildIdentifier(platform.application), "Clipwren v0.0.0 (build ?) \u00b7 ?");
}

} // namespace
} // namespace clipwren
