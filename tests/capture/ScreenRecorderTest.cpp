#include "capture/ScreenRecorder.h"

#include "capture/CapturePlan.h"
#include "tests/fakes/FakePlatform.h"
#include "tests/support/Pictures.h"

#include <gtest/gtest.h>

namespace clipwren {
namespace {

class ScreenRecorderTest : public testing::Test {
protected:
    FakePlatform platform;
    std::shared_ptr<ScreenRecorder> recorder = ScreenRecorder::create(platform.ports);
    std::optional<std::optional<StartError>> started;
    std::vector<RecordedFrame> stopped;
    int stopCompletions = 0;
    int deadlines = 0;

    void SetUp() override {
        recorder->onMaxDurationReached = [this] { ++deadlines; };
    }
    void start(const Rect& region = {100, 200, 400, 300}, const std::vector<std::int64_t>& excluded = {}) {
        recorder->start(region, excluded, [this](std::optional<StartError> error) {
            ASSERT_FALSE(started.has_value()) << "completed twice";
            started = error;
        });
        EXPECT_FALSE(started.has_value()) << "completed inside the call";
        platform.mainQueue.run();
    }
    void stop() {
        recorder->stop([this](std::vector<RecordedFrame> frames) {
            ++stopCompletions;
            stopped = std::move(frames);
        });
        platform.mainQueue.run();
    }
    std::string startError() const { return started && *started ? localizedDescription(**started) : ""; }
    FakeCaptureStream::Control& stream() { return *platform.screenCapture.streams.back(); }
};

TEST_F(ScreenRecorderTest, ConfiguresTheStreamFromTheSettingsStoredNow) {
    platform.store.values = {{"recording.fps", 24}, {"recording.resolution", 480}};
    platform.screens.attached = {{{0, 0, 1440, 900}, 1}, {{1440, -180, 1920, 1080}, 2}};
    platform.screenCapture.content = {.displays = {{1}, {2}}, .windows = {{70}, {71}, {72}}};
    start({1540, 100, 960, 540}, {72, 71, 99});
    ASSERT_TRUE(started && !*started);
    EXPECT_EQ(stream().filter.display, ShareableDisplay{2});
    EXPECT_EQ(stream().filter.excludingWindows, (std::vector<ShareableWindow>{{71}, {72}}));
    EXPECT_EQ(stream().configuration.sourceRect, (Rect{100, 260, 960, 540}));
    EXPECT_EQ(stream().configuration.width, 480);
    EXPECT_EQ(stream().configuration.height, 270);
    EXPECT_EQ(stream().configuration.minimumFrameInterval, (MediaTime{1, 24}));
    EXPECT_EQ(stream().queue->label(), "app.clipwren.Clipwren.frames");
}

TEST_F(ScreenRecorderTest, AScreenWithoutNumberIsMatchedByTheMainDisplay) {
    platform.screens.attached = {{{0, 0, 1440, 900}, std::nullopt}};
    platform.screens.mainDisplay = 42;
    platform.screenCapture.content.displays = {{7}, {42}};
    start();
    EXPECT_EQ(stream().filter.display, ShareableDisplay{42});
}

TEST_F(ScreenRecorderTest, WithoutAnyScreenThereIsNoDisplay) {
    platform.screens.attached.clear();
    platform.screens.mainScreen.reset();
    start();
    EXPECT_EQ(startError(), "No capturable display found for the selected region.");
    EXPECT_TRUE(platform.screenCapture.streams.empty());
}

TEST_F(ScreenRecorderTest, ARegionOnNoScreenIsCapturedFromTheMainScreen) {
    start({5000, 5000, 100, 100});
    EXPECT_TRUE(started && !*started);
    EXPECT_EQ(stream().filter.display, ShareableDisplay{1});
}

TEST_F(ScreenRecorderTest, AnUnshareableDisplayIsNoDisplay) {
    platform.screenCapture.content.displays = {{2}};
    start();
    EXPECT_EQ(startError(), "No capturable display found for the selected region.");
}

TEST_F(ScreenRecorderTest, ThePlatformsOwnErrorsComeUnwrapped) {
    platform.screenCapture.contentError = PlatformError{"Not permitted."};
    start();
    EXPECT_EQ(startError(), "Not permitted.");

    platform.screenCapture.contentError.reset();
    platform.screenCapture.outputError = PlatformError{"No output."};
    started.reset();
    start();
    EXPECT_EQ(startError(), "No output.");
}

TEST_F(ScreenRecorderTest, AFailedStartNamesItsReasonAndDropsTheStream) {
    platform.screenCapture.startError = PlatformError{"The display is asleep."};
    start();
    EXPECT_EQ(startError(), "Stream failed to start: The display is asleep.");
    EXPECT_EQ(stream().stream, nullptr);
    EXPECT_EQ(platform.mainQueue.scheduledCount(), 0u);
    stop();
    EXPECT_TRUE(stopped.empty());
    EXPECT_EQ(stopCompletions, 1);
    EXPECT_EQ(stream().stopCount, 0);
}

TEST_F(ScreenRecorderTest, StopHandsOutTheFramesInOrder) {
    start();
    for (int i = 0; i < 3; ++i)
        stream().deliver(plainImage(640, 360), {i + 50, 15});
    EXPECT_EQ(recorder->byteCount(), 2'764'800);
    stop();
    ASSERT_EQ(stopped.size(), 3u);
    EXPECT_EQ(stopped[0].presentationTime, MediaTime::zero());
    EXPECT_EQ(stopped[2].presentationTime, (MediaTime{2, 15}));
    EXPECT_EQ(recorder->byteCount(), 0);
    stop();
    EXPECT_TRUE(stopped.empty());
    EXPECT_EQ(stopCompletions, 2);
}

TEST_F(ScreenRecorderTest, AFailureToStopStillLeavesTheFrames) {
    start();
    stream().deliver(plainImage(640, 360), {1, 15});
    platform.screenCapture.stopError = PlatformError{"Too late."};
    stop();
    EXPECT_EQ(stopped.size(), 1u);
    EXPECT_TRUE(platform.log.lines().empty());
}

TEST_F(ScreenRecorderTest, AStreamEndedByTheSystemIsOnlyLogged) {
    start();
    stream().deliver(plainImage(640, 360), {1, 15});
    stream().delegate.lock()->didStopWithError({"The monitor is gone."});
    EXPECT_EQ(platform.log.lines(),
              (std::vector<std::string>{"Clipwren: stream stopped with error: The monitor is gone."}));
    stop();
    EXPECT_EQ(stopped.size(), 1u);
}

TEST_F(ScreenRecorderTest, TheDeadlineOfEachSettingIsCalledOnce) {
    for (const auto& [stored, seconds] : {std::pair{15, 15.0}, {30, 30.0}, {60, 60.0}}) {
        platform.store.values["recording.maxDuration"] = stored;
        recorder = ScreenRecorder::create(platform.ports);
        SetUp();
        deadlines = 0;
        started.reset();
        start();
        platform.mainQueue.advance(seconds - 0.001);
        EXPECT_EQ(deadlines, 0);
        platform.mainQueue.advance(0.001);
        EXPECT_EQ(deadlines, 1);
        platform.mainQueue.advance(500);
        EXPECT_EQ(deadlines, 1);
        EXPECT_TRUE(stream().isRunning) << "the deadline ends nothing by itself";
        stop();
    }
}

TEST_F(ScreenRecorderTest, WithoutLimitNoTimerIsPending) {
    platform.store.values["recording.maxDuration"] = 0;
    start();
    EXPECT_EQ(platform.mainQueue.scheduledCount(), 0u);
    platform.mainQueue.advance(100'000);
    EXPECT_EQ(deadlines, 0);
}

TEST_F(ScreenRecorderTest, AStopBeforeTheDeadlineCancelsIt) {
    start();
    platform.mainQueue.advance(29);
    stop();
    platform.mainQueue.advance(100);
    EXPECT_EQ(deadlines, 0);
    EXPECT_EQ(platform.mainQueue.scheduledCount(), 0u);
}

TEST_F(ScreenRecorderTest, TheDeadlineOfAReleasedRecorderDoesNothing) {
    start();
    recorder.reset();
    EXPECT_EQ(stream().stream, nullptr) << "the stream ends with its recorder";
    platform.mainQueue.advance(100);
    EXPECT_EQ(deadlines, 0);
}

TEST_F(ScreenRecorderTest, AStopWhileTheStartIsPendingReturnsNothing) {
    platform.screenCapture.holdsStart = true;
    start();
    EXPECT_FALSE(started.has_value());
    stop();
    EXPECT_EQ(stopCompletions, 1);
    EXPECT_TRUE(stopped.empty());
    recorder.reset();
    platform.screenCapture.finishStart();
    platform.mainQueue.run();
    EXPECT_TRUE(started && !*started);
    EXPECT_EQ(stream().stream, nullptr)
        << "the late stream goes with the recorder that nobody holds any more";
}

TEST_F(ScreenRecorderTest, StopNowNeedsNoMainQueue) {
    start();
    stream().deliver(plainImage(640, 360), {1, 15});
    EXPECT_EQ(recorder->stopNow().size(), 1u);
    EXPECT_EQ(stream().stream, nullptr);
    EXPECT_EQ(platform.mainQueue.scheduledCount(), 0u);
}

} // namespace
} // namespace clipwren
