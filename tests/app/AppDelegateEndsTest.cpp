#include "tests/app/AppDelegateFixture.h"

namespace clipwren {
namespace {

// How the program ends, whoever ends it: nothing recorded is lost, nothing stays behind.
using AppDelegateEndsTest = AppDelegateFixture;

TEST_F(AppDelegateEndsTest, QuitAsksNothingEvenWhileRecording) {
    const auto quit = platform.statusBar.item->menu->items[5].action;
    startRecording();
    quit();
    EXPECT_TRUE(platform.application.isTerminated);
    EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(AppDelegateEndsTest, QuittingSavesARunningRecordingInTheBackground) {
    startRecording();
    deliverFrames(3);
    delegate->applicationWillTerminate();
    EXPECT_TRUE(platform.windows.visible().empty());
    EXPECT_FALSE(std::filesystem::exists(expectedFile()));
    // The main thread ends the delegate, with its item and timers; the background queue must not hold it.
    const std::weak_ptr<AppDelegate> ended = delegate;
    delegate.reset();
    EXPECT_TRUE(ended.expired());
    platform.backgroundQueue.run();
    EXPECT_TRUE(std::filesystem::is_regular_file(expectedFile()));
    EXPECT_TRUE(platform.pasteboard.items.empty());
    EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(AppDelegateEndsTest, QuittingRightAfterTheStopSavesTheRecordingOnce) {
    startRecording();
    deliverFrames(3);
    delegate->triggerRecord(); // the stop itself still waits in the main queue
    ASSERT_EQ(looks(), Looks::encoding);
    delegate->applicationWillTerminate();
    platform.backgroundQueue.run();
    EXPECT_TRUE(std::filesystem::is_regular_file(expectedFile()));
    EXPECT_EQ(platform.log.lines().size(), 1u);
}

TEST_F(AppDelegateEndsTest, QuittingWhileSelectingOrIdleSavesNothing) {
    delegate->applicationWillTerminate();
    pressHotKey();
    delegate->applicationWillTerminate();
    platform.backgroundQueue.run();
    EXPECT_TRUE(platform.windows.visible().empty());
    EXPECT_TRUE(platform.log.lines().empty());
}

TEST_F(AppDelegateEndsTest, AnEndThatNobodyAskedForSavesTheRecording) {
    startRecording();
    deliverFrames(3);
    delegate->saveBeforeExit();
    EXPECT_TRUE(std::filesystem::is_regular_file(expectedFile()));
    EXPECT_EQ(platform.log.lines().size(), 1u);
    delegate->saveBeforeExit();
    EXPECT_EQ(platform.log.lines().size(), 1u);
}

TEST_F(AppDelegateEndsTest, AnEndWithoutARecordingSavesNothing) {
    delegate->saveBeforeExit();
    EXPECT_TRUE(platform.log.lines().empty());
    pressHotKey();
    delegate->saveBeforeExit();
    EXPECT_TRUE(platform.log.lines().empty());
}

TEST_F(AppDelegateEndsTest, AShutdownWaitsFromTheBeginOfARecordingUntilItsFileIsWhole) {
    EXPECT_EQ(platform.session.delayCount(), 0);
    pressHotKey();
    EXPECT_EQ(platform.session.delayCount(), 0);
    drag({100, 100}, {420, 340});
    EXPECT_EQ(platform.session.reasons, (std::vector<std::string>{"A recording is not saved yet"}));
    EXPECT_EQ(platform.session.delayCount(), 1);
    deliverFrames(3);
    pressHotKey();
    ASSERT_EQ(looks(), Looks::encoding);
    EXPECT_EQ(platform.session.delayCount(), 1);
    platform.backgroundQueue.run();
    EXPECT_TRUE(std::filesystem::is_regular_file(expectedFile()));
    platform.mainQueue.run();
    EXPECT_EQ(platform.session.delayCount(), 0);
}

TEST_F(AppDelegateEndsTest, AShutdownDoesNotWaitForTheAnswerToAnAlert) {
    platform.folders.picturesFolder = "/dev/null/none";
    startRecording();
    deliverFrames(3);
    pressHotKey();
    platform.alerts.whileShown = [this] { EXPECT_EQ(platform.session.delayCount(), 0); };
    finishEncoding();
    EXPECT_EQ(platform.alerts.shown.size(), 1u);
}

TEST_F(AppDelegateEndsTest, AShutdownDoesNotWaitForARecordingThatCouldNotStart) {
    platform.screenCapture.startError = PlatformError{"Not now."};
    pressHotKey();
    drag({100, 100}, {420, 340});
    EXPECT_EQ(platform.alerts.shown.size(), 1u);
    EXPECT_EQ(looks(), Looks::idle);
    EXPECT_EQ(platform.session.delayCount(), 0);
}

TEST_F(AppDelegateEndsTest, AShutdownEndsTheProgramWhichSavesTheRecording) {
    startRecording();
    deliverFrames(3);
    platform.session.willShutDown();
    EXPECT_TRUE(platform.application.isTerminated);
    delegate->applicationWillTerminate();
    EXPECT_FALSE(overlayIsShown());
    EXPECT_FALSE(std::filesystem::exists(expectedFile()));
    delegate.reset();
    EXPECT_EQ(platform.session.delayCount(), 1) << "held by what is still being saved";
    platform.backgroundQueue.run();
    EXPECT_TRUE(std::filesystem::is_regular_file(expectedFile()));
    EXPECT_EQ(platform.session.delayCount(), 0);
}

TEST_F(AppDelegateEndsTest, AShutdownLetsAnEncodingEndAndTheGifReachTheClipboard) {
    startRecording();
    deliverFrames(3);
    pressHotKey();
    platform.session.willShutDown();
    EXPECT_FALSE(platform.application.isTerminated);
    finishEncoding();
    EXPECT_EQ(platform.pasteboard.items, (std::vector{expectedFile()}));
    platform.session.willShutDown();
    EXPECT_FALSE(platform.application.isTerminated);
}

TEST_F(AppDelegateEndsTest, LateCallsAfterTheDelegatesEndDoNothing) {
    pressHotKey();
    const auto registration = platform.hotKeys.registrations.begin()->second.identifier;
    platform.hotKeys.press(KeyCode::g, commandShift); // still queued when the delegate goes
    delegate.reset();
    EXPECT_TRUE(platform.windows.visible().empty());
    EXPECT_TRUE(platform.hotKeys.registrations.empty());
    EXPECT_FALSE(platform.statusBar.item->exists);
    platform.mainQueue.run();
    platform.hotKeys.sendEvent(registration);
    platform.mainQueue.advance(10);
    EXPECT_TRUE(platform.windows.visible().empty());
}

} // namespace
} // namespace clipwren
