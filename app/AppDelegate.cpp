#include "app/AppDelegate.h"

#include "app/HotKey.h"
#include "base/Weakly.h"
#include "capture/ScreenRecorder.h"
#include "encoding/GifEncoder.h"
#include "platform/Alerts.h"
#include "platform/Application.h"
#include "platform/BackgroundQueue.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/Pasteboard.h"
#include "platform/ScreenCapture.h"
#include "platform/Session.h"
#include "platform/StatusItem.h"
#include "platform/Windows.h"
#include "settings/SettingsWindow.h"
#include "ui/RecordingOverlay.h"
#include "ui/RegionSelector.h"

#include <utility>

namespace clipwren {

namespace {

constexpr double smallestSide = 8;

std::string utf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

void logSavedFile(const Platform& platform, std::string_view what, const std::filesystem::path& file) {
    platform.log.write("[Clipwren] " + std::string(what) + " — " + utf8(file.filename()));
}

void saveWithoutCopying(const Platform& platform, const std::vector<RecordedFrame>& frames) {
    const auto result = GifEncoder::encode(frames, platform.folders, platform.files, platform.canvases);
    if (result)
        logSavedFile(platform, "GIF saved before the program ended", *result);
    else
        platform.log.write("Clipwren: Could not save GIF: " + std::string(errorDescription(result.error())));
}

} // namespace

std::shared_ptr<AppDelegate> AppDelegate::create(const Platform& platform) {
    return std::shared_ptr<AppDelegate>(new AppDelegate(platform));
}

AppDelegate::AppDelegate(const Platform& platform) : platform(platform) {}

AppDelegate::~AppDelegate() {
    // Members would go the other way round: here the status item goes first and the capture before its
    // overlay.
    statusItem = nullptr;
    idleMenu = nullptr;
    hotKey = nullptr;
    regionSelector = nullptr;
    recorder = nullptr;
    overlay = nullptr;
    settingsWindow = nullptr;
    sizeIndicatorTimer = nullptr;
}

void AppDelegate::applicationDidFinishLaunching() {
    setupStatusItem();
    setupHotKey();
    if (!mayCaptureScreen()) openSettings();
    // Not on this thread: the folder may lie on a drive that takes its time.
    platform.backgroundQueue.async(
        [&ports = platform] { GifEncoder::removeAbandonedRecordings(ports.folders, ports.files); });
}

void AppDelegate::applicationShouldHandleReopen() { openSettings(); }

void AppDelegate::setupHotKey() {
    hotKey = HotKey::create(
        platform.hotKeys, platform.mainQueue, KeyCode::g, HotKeyModifiers::command | HotKeyModifiers::shift,
        weakly(shared_from_this(), [](AppDelegate& delegate) { delegate.triggerRecord(); }));
}

bool AppDelegate::mayCaptureScreen() const {
    return platform.screenCapture.permission() == CapturePermission::granted;
}

void AppDelegate::setState(State newState) {
    state = newState;
    updateIcon();
}

void AppDelegate::triggerRecord() {
    switch (state) {
    case State::idle: return startSelection();
    case State::selecting: return cancelSelection();
    case State::recording: return stopRecording();
    case State::encoding: return;
    }
}

void AppDelegate::startSelection() {
    setState(State::selecting);
    regionSelector = RegionSelector::create(
        platform, weakly(shared_from_this(), [](AppDelegate& delegate, const std::optional<Rect>& rect) {
            delegate.selectionDidComplete(rect);
        }));
    regionSelector->show();
}

void AppDelegate::selectionDidComplete(const std::optional<Rect>& rect) {
    regionSelector = nullptr;
    // Written so that a size that is not a number is refused too.
    if (rect && rect->width >= smallestSide && rect->height >= smallestSide)
        startRecording(*rect);
    else
        setState(State::idle);
}

void AppDelegate::cancelSelection() {
    // Its completion drops the member while the selector is still at work.
    if (const auto selector = regionSelector) selector->complete(std::nullopt);
    regionSelector = nullptr;
    setState(State::idle);
}

void AppDelegate::startRecording(const Rect& region) {
    if (!mayCaptureScreen()) {
        setState(State::idle);
        openSettings();
        return;
    }
    setState(State::recording);
    shutdownDelay = platform.session.delayShutdown(
        "A recording is not saved yet",
        weakly(shared_from_this(), [](AppDelegate& delegate) { delegate.computerWillShutDown(); }));

    // Shown before the capture starts, so that its windows' numbers exist and can be left out.
    overlay = std::make_shared<RecordingOverlay>(platform, region);
    overlay->show();

    recorder = ScreenRecorder::create(platform);
    // On the main queue as a task of its own: it must not run inside the timer that fires it.
    recorder->onMaxDurationReached = [this, weakSelf = weak_from_this()] {
        if (weakSelf.lock())
            platform.mainQueue.async([weakSelf] {
                if (const auto self = weakSelf.lock()) self->stopRecording();
            });
    };
    memoryRanShort = false;
    recorder->onMemoryShort = weakly(shared_from_this(), [](AppDelegate& delegate) {
        if (delegate.state != State::recording) return;
        delegate.memoryRanShort = true;
        delegate.stopRecording();
    });
    startSizeIndicator();

    platform.mainQueue.async([self = shared_from_this(), startedRecorder = recorder, region,
                              shownOverlay = overlay] {
        startedRecorder->start(region, shownOverlay->windowNumbers(),
                               [self, startedRecorder, shownOverlay](const std::optional<StartError>& error) {
                                   if (error)
                                       self->startDidFail(startedRecorder, localizedDescription(*error));
                               });
    });
}

void AppDelegate::startDidFail(const std::shared_ptr<ScreenRecorder>& failedRecorder,
                               const std::string& description) {
    showAlert("Could not start recording: " + description);
    // The main queue went on while the alert was up: a stop may have ended this recording already.
    if (state != State::recording || recorder != failedRecorder) return;
    if (overlay) overlay->hide();
    overlay = nullptr;
    recorder = nullptr;
    shutdownDelay = nullptr;
    setState(State::idle);
}

void AppDelegate::stopRecording() {
    if (state != State::recording || !recorder) return;
    if (sizeIndicatorTimer) sizeIndicatorTimer->invalidate();
    sizeIndicatorTimer = nullptr;
    setState(State::encoding);
    if (overlay) overlay->hide();
    overlay = nullptr;

    platform.mainQueue.async([self = shared_from_this(), stoppedRecorder = recorder] {
        stoppedRecorder->stop([self](std::vector<RecordedFrame> frames) {
            self->recorder = nullptr;
            self->encodeAndCopy(std::move(frames));
        });
    });
}

void AppDelegate::encodeAndCopy(std::vector<RecordedFrame> frames) {
    platform.backgroundQueue.async([self = shared_from_this(), frames = std::move(frames)]() mutable {
        self->progress = 0;
        const auto result =
            GifEncoder::encode(frames, self->platform.folders, self->platform.files, self->platform.canvases,
                               [&](double share) { self->progress = share; });
        frames.clear();
        // The delegate itself goes back to the main thread: it must not end on this one.
        MainQueue& mainQueue = self->platform.mainQueue;
        mainQueue.async([self = std::move(self), result] { self->encodingDidEnd(result); });
    });
}

// Nothing else that the user does with the program comes after that. A recording that is encoded already only
// needs the time that it holds the computer up.
void AppDelegate::computerWillShutDown() {
    if (state == State::recording) platform.application.terminate();
}

void AppDelegate::encodingDidEnd(const Expected<std::filesystem::path, GifEncoderError>& result) {
    shutdownDelay = nullptr; // before an alert, which may stay for as long as the user is away
    if (result) {
        platform.pasteboard.clearContents();
        platform.pasteboard.writeFileURL(*result);
        logSavedFile(platform, "GIF copied to clipboard", *result);
        // Otherwise it would have to be guessed why the recording is shorter than what happened.
        if (memoryRanShort)
            showAlert("The recording was stopped because memory is running short. What was recorded until "
                      "then is saved and on the clipboard.");
    } else {
        showAlert("Could not save GIF: " + std::string(errorDescription(result.error())));
    }
    setState(State::idle);
}

void AppDelegate::showAlert(const std::string& informativeText) {
    platform.alerts.runModal(
        {.messageText = "Clipwren", .informativeText = informativeText, .style = AlertStyle::warning});
}

void AppDelegate::applicationWillTerminate() {
    regionSelector = nullptr;
    if (overlay) overlay->hide();
    overlay = nullptr;
    if (const auto interrupted = std::exchange(recorder, nullptr))
        // Without the delegate, which must not end on that thread.
        platform.backgroundQueue.async(
            [&ports = platform, frames = interrupted->stopNow(), delay = std::move(shutdownDelay)] {
                saveWithoutCopying(ports, frames);
            });
}

void AppDelegate::saveBeforeExit() {
    if (const auto interrupted = std::exchange(recorder, nullptr))
        saveWithoutCopying(platform, interrupted->stopNow());
}

} // namespace clipwren
