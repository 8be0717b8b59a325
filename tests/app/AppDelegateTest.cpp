#include "tests/app/AppDelegateFixture.h"
#include "tests/support/Pictures.h"

#include <gtest/gtest.h>

#include <fstream>

namespace clipwren {
namespace {

using AppDelegateTest = AppDelegateFixture;

TEST_F(AppDelegateTest, TheStartRemovesWhatAKilledOneHasLeftInTheBackground) {
    const auto output = expectedFile().parent_path();
    EXPECT_FALSE(std::filesystem::exists(output)) << "looking makes no folder";
    std::filesystem::create_directories(output);
    const auto left = output / ".clipwren-recording-0123456789abcdef.part";
    std::ofstream(left) << "half a GIF";
    std::ofstream(output / "mine.gif") << "mine";

    const auto next = AppDelegate::create(platform.ports);
    next->applicationDidFinishLaunching();
    EXPECT_TRUE(std::filesystem::exists(left));
    platform.backgroundQueue.run();
    EXPECT_FALSE(std::filesystem::exists(left));
    EXPECT_TRUE(std::filesystem::exists(output / "mine.gif"));
}

TEST_F(AppDelegateTest, StartsIdleWithItsMenuAndHotKey) {
    EXPECT_EQ(looks(), Looks::idle);
    ASSERT_EQ(platform.hotKeys.registrations.size(), 1u);
    const auto& registration = platform.hotKeys.registrations.begin()->second;
    EXPECT_EQ(registration.keyCode, 5u);
    EXPECT_EQ(registration.modifiers, 768u);
    EXPECT_TRUE(platform.settingsViews.made.empty());
    EXPECT_EQ(platform.screenCapture.permissionRequests, 0);

    const auto& items = platform.statusBar.item->menu->items;
    ASSERT_EQ(items.size(), 6u);
    EXPECT_EQ(items[0].title, "Record Region  (⌘⇧G)");
    EXPECT_EQ(items[0].keyEquivalent, "");
    EXPECT_EQ(items[1].title, "Open GIF Folder");
    EXPECT_TRUE(items[2].isSeparator);
    EXPECT_EQ(items[3].title, "Settings…");
    EXPECT_TRUE(items[4].isSeparator);
    EXPECT_EQ(items[5].title, "Quit Clipwren");
    EXPECT_EQ(items[5].keyEquivalent, "q");
    for (std::size_t i = 0; i < items.size(); ++i)
        EXPECT_EQ(items[i].showsImage, i != 3) << i;
}

TEST_F(AppDelegateTest, WithoutPermissionTheSettingsOpenAtStart) {
    FakePlatform other;
    other.screenCapture.currentPermission = CapturePermission::denied;
    const auto second = AppDelegate::create(other.ports);
    second->applicationDidFinishLaunching();
    ASSERT_EQ(other.settingsViews.made.size(), 1u);
    EXPECT_EQ(other.settingsViews.made[0]->orderedFront, 1);
    EXPECT_EQ(other.settingsViews.made[0]->permissionDescription, "Missing");
    EXPECT_EQ(other.application.policy, ActivationPolicy::regular);
    EXPECT_EQ(other.screenCapture.permissionRequests, 0);
}

TEST_F(AppDelegateTest, ARefusedHotKeyIsSilentAndTheMenuStillWorks) {
    FakePlatform other;
    other.hotKeys.refuses = true;
    const auto second = AppDelegate::create(other.ports);
    second->applicationDidFinishLaunching();
    other.mainQueue.run();
    EXPECT_TRUE(other.alerts.shown.empty());
    EXPECT_TRUE(other.log.lines().empty());
    other.statusBar.item->menu->items[0].action();
    EXPECT_EQ(other.windows.keyMonitorCount, 1);
}

TEST_F(AppDelegateTest, TheWholeRoad) {
    startRecording();
    EXPECT_TRUE(overlayIsShown());
    EXPECT_EQ(stream().configuration.sourceRect, (Rect{100, 560, 320, 240}));
    deliverFrames(3);
    pressHotKey();
    EXPECT_EQ(looks(), Looks::encoding);
    EXPECT_FALSE(overlayIsShown());
    EXPECT_EQ(stream().stopCount, 1);
    EXPECT_TRUE(platform.pasteboard.items.empty());
    finishEncoding();
    EXPECT_EQ(looks(), Looks::idle);
    EXPECT_EQ(platform.pasteboard.items, std::vector{expectedFile()});
    EXPECT_EQ(platform.pasteboard.clearCount, 1);
    EXPECT_TRUE(std::filesystem::is_regular_file(expectedFile()));
    EXPECT_EQ(
        platform.log.lines(),
        (std::vector<std::string>{"[Clipwren] GIF copied to clipboard — Recording_2024-03-09_14-05-31.gif"}));
    EXPECT_TRUE(platform.alerts.shown.empty());
    EXPECT_EQ(platform.mainQueue.scheduledCount(), 0u);
}

TEST_F(AppDelegateTest, TheOverlayIsShownBeforeTheCaptureStartsAndItsWindowsAreLeftOut) {
    platform.screenCapture.content.windows = {{1}, {2}, {3}};
    pressHotKey();                                         // window 1: the selector
    platform.windows.visible()[0]->drag({0, 0}, {50, 50}); // window 2: the overlay
    EXPECT_TRUE(overlayIsShown());
    EXPECT_TRUE(platform.screenCapture.streams.empty());
    platform.mainQueue.run();
    EXPECT_EQ(stream().filter.excludingWindows, (std::vector<ShareableWindow>{{2}}));
}

TEST_F(AppDelegateTest, TheMenuItemRunsTheSameDispatchAsTheHotKey) {
    const auto record = platform.statusBar.item->menu->items[0].action;
    record();
    EXPECT_EQ(looks(), Looks::selecting);
    record();
    EXPECT_EQ(looks(), Looks::idle);
}

TEST_F(AppDelegateTest, TheHotKeyTwiceQuicklyShowsAndCancelsTheSelector) {
    platform.hotKeys.press(KeyCode::g, commandShift);
    platform.hotKeys.press(KeyCode::g, commandShift);
    platform.mainQueue.run();
    EXPECT_EQ(looks(), Looks::idle);
    EXPECT_EQ(platform.windows.made.size(), 1u);
    EXPECT_TRUE(platform.windows.made[0]->isDestroyed);
}

TEST_F(AppDelegateTest, EscapeReturnsToIdle) {
    pressHotKey();
    EXPECT_EQ(looks(), Looks::selecting);
    EXPECT_TRUE(platform.windows.pressKey(KeyCode::escape));
    EXPECT_EQ(looks(), Looks::idle);
    EXPECT_TRUE(platform.screenCapture.streams.empty());
}

TEST_F(AppDelegateTest, ALockEndsASelectionAndNothingElse) {
    platform.session.willLock();
    EXPECT_EQ(looks(), Looks::idle);
    pressHotKey();
    ASSERT_EQ(looks(), Looks::selecting);
    platform.session.willLock();
    platform.mainQueue.run();
    EXPECT_EQ(looks(), Looks::idle);
    EXPECT_TRUE(platform.windows.visible().empty());
    EXPECT_TRUE(platform.screenCapture.streams.empty());

    startRecording();
    platform.session.willLock();
    platform.mainQueue.run();
    EXPECT_EQ(looks(), Looks::recording);
    pressHotKey();
    platform.session.willLock();
    EXPECT_EQ(looks(), Looks::encoding);
    finishEncoding();
    EXPECT_EQ(looks(), Looks::idle);
}

TEST_F(AppDelegateTest, ATooSmallDragNeverRecordsExactlyEightByEightDoes) {
    pressHotKey();
    drag({10, 10}, {17.9, 310});
    drag({10, 10}, {310, 17.9});
    EXPECT_EQ(looks(), Looks::selecting);
    EXPECT_TRUE(platform.alerts.shown.empty());
    drag({10, 10}, {18, 18});
    EXPECT_EQ(looks(), Looks::recording);
}

TEST_F(AppDelegateTest, ARevokedPermissionOpensTheSettingsInsteadOfRecording) {
    pressHotKey();
    platform.screenCapture.currentPermission = CapturePermission::denied;
    drag({10, 10}, {200, 200});
    EXPECT_EQ(looks(), Looks::idle);
    EXPECT_FALSE(overlayIsShown());
    EXPECT_EQ(platform.settingsViews.made.size(), 1u);
    EXPECT_TRUE(platform.alerts.shown.empty());
    EXPECT_TRUE(platform.screenCapture.streams.empty());
}

TEST_F(AppDelegateTest, AStartFailureIsShownWhileTheOverlayIsStillUp) {
    platform.screenCapture.startError = PlatformError{"The display is asleep."};
    bool overlayDuringAlert = false;
    platform.alerts.whileShown = [&] { overlayDuringAlert = overlayIsShown(); };
    pressHotKey();
    drag({10, 10}, {200, 200});
    ASSERT_EQ(platform.alerts.shown.size(), 1u);
    const Alert& alert = platform.alerts.shown[0];
    EXPECT_EQ(alert.messageText, "Clipwren");
    EXPECT_EQ(alert.informativeText,
              "Could not start recording: Stream failed to start: The display is asleep.");
    EXPECT_EQ(alert.style, AlertStyle::warning);
    EXPECT_TRUE(alert.buttons.empty());
    EXPECT_TRUE(overlayDuringAlert);
    EXPECT_FALSE(overlayIsShown());
    EXPECT_EQ(looks(), Looks::idle);
    EXPECT_EQ(platform.application.activations, 1) << "only the selector activates";

    // The size indicator's timer is left and does nothing.
    EXPECT_EQ(platform.mainQueue.scheduledCount(), 1u);
    platform.mainQueue.advance(5);
    EXPECT_EQ(looks(), Looks::idle);

    platform.screenCapture.startError.reset();
    platform.alerts.whileShown = nullptr;
    startRecording();
    EXPECT_EQ(platform.mainQueue.scheduledCount(), 2u) << "the indicator's new timer, and the auto-stop";
}

TEST_F(AppDelegateTest, AStopWhileTheStartFailureIsShownEndsTheRecordingOnce) {
    platform.screenCapture.startError = PlatformError{"No."};
    bool stoppedInside = false;
    platform.alerts.whileShown = [&] {
        if (stoppedInside) return;
        stoppedInside = true;
        pressHotKey(); // stop
        finishEncoding();
        EXPECT_EQ(looks(), Looks::idle);
        pressHotKey(); // a new selection
    };
    pressHotKey();
    drag({10, 10}, {200, 200});
    ASSERT_EQ(platform.alerts.shown.size(), 2u);
    EXPECT_EQ(platform.alerts.shown[1].informativeText, "Could not save GIF: No frames were captured.");
    EXPECT_EQ(looks(), Looks::selecting) << "the old failure leaves the new selection alone";
}

TEST_F(AppDelegateTest, TheClickOnTheStatusItemStops) {
    startRecording();
    deliverFrames(1);
    EXPECT_FALSE(platform.statusBar.item->click());
    EXPECT_EQ(looks(), Looks::encoding);
}

TEST_F(AppDelegateTest, StoppingTwiceRunsTheStopOnce) {
    startRecording();
    deliverFrames(1);
    platform.statusBar.item->click();
    pressHotKey();
    finishEncoding();
    EXPECT_EQ(stream().stopCount, 1);
    EXPECT_EQ(platform.pasteboard.items.size(), 1u);
    EXPECT_EQ(platform.log.lines().size(), 1u);
}

TEST_F(AppDelegateTest, TriggersWhileEncodingMeanNothing) {
    startRecording();
    deliverFrames(1);
    pressHotKey();
    ASSERT_EQ(looks(), Looks::encoding);
    const auto windows = platform.windows.made.size();
    pressHotKey();
    platform.statusBar.item->menu->items[0].action();
    EXPECT_EQ(looks(), Looks::encoding);
    EXPECT_EQ(platform.windows.made.size(), windows);
    EXPECT_TRUE(platform.alerts.shown.empty());
    EXPECT_EQ(platform.backgroundQueue.items.size(), 1u);
}

TEST_F(AppDelegateTest, AStopWhileTheStartIsPendingIsNotDeferred) {
    platform.screenCapture.holdsStart = true;
    startRecording();
    pressHotKey();
    EXPECT_EQ(looks(), Looks::encoding);
    finishEncoding();
    ASSERT_EQ(platform.alerts.shown.size(), 1u);
    EXPECT_EQ(platform.alerts.shown[0].informativeText, "Could not save GIF: No frames were captured.");
    EXPECT_EQ(looks(), Looks::idle);
    platform.screenCapture.finishStart();
    platform.mainQueue.run();
    EXPECT_EQ(looks(), Looks::idle);
    EXPECT_EQ(stream().stream, nullptr) << "the late capture ends by itself";
    platform.mainQueue.advance(100);
    EXPECT_EQ(looks(), Looks::idle);
}

TEST_F(AppDelegateTest, AutoStopStopsTheRecording) {
    platform.store.values["recording.maxDuration"] = 15;
    startRecording();
    deliverFrames(2);
    platform.mainQueue.advance(14.9);
    EXPECT_EQ(looks(), Looks::recording);
    platform.mainQueue.advance(0.2);
    EXPECT_EQ(looks(), Looks::encoding);
    finishEncoding();
    EXPECT_EQ(platform.pasteboard.items.size(), 1u);
}

TEST_F(AppDelegateTest, AutoStopAfterTheUsersStopDoesNothing) {
    platform.store.values["recording.maxDuration"] = 15;
    startRecording();
    deliverFrames(2);
    platform.mainQueue.advance(14.9);
    pressHotKey();
    finishEncoding();
    platform.mainQueue.advance(10);
    EXPECT_EQ(looks(), Looks::idle);
    EXPECT_EQ(stream().stopCount, 1);
}

TEST_F(AppDelegateTest, AutoStopTwoRecordingsAgoDoesNothing) {
    platform.store.values["recording.maxDuration"] = 15;
    startRecording();
    deliverFrames(1);
    const auto late = [&] { platform.mainQueue.advance(15); };
    pressHotKey();
    finishEncoding();
    platform.store.values["recording.maxDuration"] = 0;
    startRecording();
    late();
    EXPECT_EQ(looks(), Looks::recording);
}

TEST_F(AppDelegateTest, ShortMemoryStopsTheRecordingAndTheUserIsToldOnceItIsSaved) {
    startRecording();
    platform.memory.left = 1000;
    deliverFrames(3);
    platform.mainQueue.run();
    EXPECT_EQ(looks(), Looks::encoding);
    EXPECT_EQ(stream().stopCount, 1);
    EXPECT_TRUE(platform.alerts.shown.empty());
    finishEncoding();
    EXPECT_EQ(platform.pasteboard.items.size(), 1u);
    ASSERT_EQ(platform.alerts.shown.size(), 1u);
    EXPECT_NE(platform.alerts.shown.front().informativeText.find("memory is running short"),
              std::string::npos);
    EXPECT_EQ(looks(), Looks::idle);

    // The next one is a recording like any other.
    platform.memory.left = std::int64_t{1} << 40;
    startRecording();
    deliverFrames(2);
    pressHotKey();
    finishEncoding();
    EXPECT_EQ(platform.alerts.shown.size(), 1u);
}

TEST_F(AppDelegateTest, ShortMemoryAndTheUserStopTheRecordingOnce) {
    startRecording();
    platform.memory.left = 1000;
    deliverFrames(1);
    pressHotKey();
    finishEncoding();
    EXPECT_EQ(stream().stopCount, 1);
    EXPECT_EQ(platform.pasteboard.items.size(), 1u);
}

TEST_F(AppDelegateTest, AFailedEncodingIsShownAndLeavesTheClipboardAlone) {
    // A file stands where the output folder should be.
    std::filesystem::create_directories(home.path() / "Pictures");
    std::ofstream(home.path() / "Pictures" / "Clipwren") << "in the way";
    platform.pasteboard.items = {"/tmp/earlier"};
    startRecording();
    deliverFrames(1);
    pressHotKey();
    finishEncoding();
    ASSERT_EQ(platform.alerts.shown.size(), 1u);
    EXPECT_EQ(platform.alerts.shown[0].informativeText,
              "Could not save GIF: Could not create GIF destination.");
    EXPECT_EQ(platform.pasteboard.items.size(), 1u);
    EXPECT_EQ(platform.pasteboard.clearCount, 0);
    EXPECT_TRUE(platform.log.lines().empty());
    EXPECT_EQ(looks(), Looks::idle);
}

TEST_F(AppDelegateTest, TheSizeIndicatorShowsAThirtySecondOfTheBytes) {
    startRecording();
    EXPECT_EQ(platform.statusBar.item->title.text, "0.0 MB ");
    EXPECT_EQ(platform.statusBar.item->title.font,
              (Font{.size = 12, .weight = FontWeight::medium, .monospacedDigits = true}));
    // 40 frames of 320 × 240: 12,288,000 bytes, a thirty-second of which is 0.366 MB.
    deliverFrames(40);
    platform.mainQueue.advance(0.74);
    EXPECT_EQ(platform.statusBar.item->title.text, "0.0 MB ");
    platform.mainQueue.advance(0.02);
    EXPECT_EQ(platform.statusBar.item->title.text, "0.4 MB ");
    pressHotKey();
    EXPECT_EQ(platform.statusBar.item->title.text, "");
    EXPECT_EQ(platform.mainQueue.scheduledCount(), 0u);
}

TEST_F(AppDelegateTest, TheSizeIndicatorDropsTheDecimalFromTenMegabytes) {
    startRecording();
    // 335,544,320 bytes in 320 frames of 1,048,576 bytes.
    const Image image = plainImage(512, 512);
    for (int i = 0; i < 319; ++i)
        stream().deliver(image, {i, 15});
    platform.mainQueue.advance(0.75);
    EXPECT_EQ(platform.statusBar.item->title.text, "10.0 MB ");
    stream().deliver(image, {319, 15});
    platform.mainQueue.advance(0.75);
    EXPECT_EQ(platform.statusBar.item->title.text, "10 MB ");
}

TEST_F(AppDelegateTest, SettingsOpenOnceAndAreBroughtToTheFrontEveryTime) {
    const auto settings = platform.statusBar.item->menu->items[3].action;
    settings();
    settings();
    ASSERT_EQ(platform.settingsViews.made.size(), 1u);
    EXPECT_EQ(platform.settingsViews.made[0]->orderedFront, 2);
    EXPECT_EQ(platform.settingsViews.made[0]->permissionUpdates, 3)
        << "at creation and each time it is shown";
    EXPECT_EQ(platform.settingsViews.made[0]->controlUpdates, 3);
    EXPECT_EQ(platform.application.policy, ActivationPolicy::regular);
    EXPECT_EQ(platform.application.activations, 2);
    platform.settingsViews.made[0]->close();
    EXPECT_EQ(platform.application.policy, ActivationPolicy::accessory);
    EXPECT_FALSE(platform.settingsViews.made[0]->exists);
    settings();
    EXPECT_EQ(platform.settingsViews.made.size(), 2u);
}

TEST_F(AppDelegateTest, StartingTheProgramAgainShowsTheSettings) {
    delegate->applicationShouldHandleReopen();
    delegate->applicationShouldHandleReopen();
    ASSERT_EQ(platform.settingsViews.made.size(), 1u);
    EXPECT_EQ(platform.settingsViews.made[0]->orderedFront, 2);
}

TEST_F(AppDelegateTest, SettingsLeaveTheRecordingAlone) {
    const auto settings = platform.statusBar.item->menu->items[3].action;
    startRecording();
    settings();
    EXPECT_EQ(looks(), Looks::recording);
}

TEST_F(AppDelegateTest, UnavailableSettingsAreSaid) {
    platform.settingsViews.isAvailable = false;
    platform.statusBar.item->menu->items[3].action();
    EXPECT_EQ(platform.log.lines().size(), 1u);
    EXPECT_EQ(platform.application.policy, ActivationPolicy::accessory);
}

TEST_F(AppDelegateTest, OpenFolderShowsTheOutputFolder) {
    platform.statusBar.item->menu->items[1].action();
    EXPECT_EQ(platform.workspace.opened, std::vector{home.path() / "Pictures" / "Clipwren"});
    EXPECT_TRUE(std::filesystem::is_directory(platform.workspace.opened[0]));
}

TEST_F(AppDelegateTest, WithoutAStatusItemTheHotKeyRecordsAllTheSame) {
    FakePlatform other;
    TemporaryFolder otherHome;
    other.folders.homeFolder = otherHome.path();
    other.statusBar.isAvailable = false;
    const auto second = AppDelegate::create(other.ports);
    second->applicationDidFinishLaunching();
    const auto press = [&] {
        other.hotKeys.press(KeyCode::g, commandShift);
        other.mainQueue.run();
    };
    press();
    other.windows.visible().at(0)->drag({0, 0}, {100, 100});
    other.mainQueue.run();
    other.screenCapture.streams.back()->deliver(plainImage(100, 100), {1, 15});
    press();
    other.backgroundQueue.run();
    other.mainQueue.run();
    EXPECT_EQ(other.pasteboard.items.size(), 1u);
}

TEST_F(AppDelegateTest, KnowsHowFarTheEncodingIs) {
    startRecording();
    deliverFrames(3);
    pressHotKey();
    EXPECT_EQ(delegate->encodingProgress(), 0);
    finishEncoding();
    EXPECT_EQ(delegate->encodingProgress(), 1);
}

} // namespace
} // namespace clipwren
