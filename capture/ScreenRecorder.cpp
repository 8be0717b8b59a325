#include "capture/ScreenRecorder.h"

#include "base/Weakly.h"
#include "capture/CapturePlan.h"
#include "capture/FrameStore.h"
#include "capture/MemoryWatch.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "settings/Preferences.h"

#include <algorithm>
#include <utility>

namespace clipwren {

namespace {

// The system may end a stream at any time, on any thread: that is logged, and the frames so far stay.
class StoppedStreamLog : public StreamDelegate {
public:
    explicit StoppedStreamLog(Log& log) : log(log) {}
    void didStopWithError(const PlatformError& error) override {
        log.write("Clipwren: stream stopped with error: " + error.localizedDescription);
    }

private:
    Log& log;
};

} // namespace

std::shared_ptr<ScreenRecorder> ScreenRecorder::create(const Platform& platform) {
    const std::shared_ptr<ScreenRecorder> recorder(new ScreenRecorder(platform));
    recorder->prepareStore();
    return recorder;
}

ScreenRecorder::ScreenRecorder(const Platform& platform)
    : platform(platform),
      frameQueue(std::make_shared<SerialQueue>("app.clipwren.Clipwren.frames")),
      streamDelegate(std::make_shared<StoppedStreamLog>(platform.log)) {}

ScreenRecorder::~ScreenRecorder() = default;

// The queue, on which all of this is called, holds the store and never the recorder.
void ScreenRecorder::prepareStore() {
    const auto report = weakly(weak_from_this().lock(), [](ScreenRecorder& recorder) {
        if (recorder.onMemoryShort) recorder.onMemoryShort();
    });
    store = std::make_shared<FrameStore>(
        MemoryWatch(platform.memory, [&mainQueue = platform.mainQueue, report] { mainQueue.async(report); }),
        [queue = frameQueue.get()] { return queue->pending() > 0; });
}

void ScreenRecorder::start(const Rect& region, const std::vector<std::int64_t>& excludeWindowNumbers,
                           StartCompletion completion) {
    const auto screens = platform.screens.screens();
    const auto screen = chooseScreen(screens, platform.screens.main(), region);
    if (!screen) {
        platform.mainQueue.async(
            [completion = std::move(completion)] { completion(RecordingError::noDisplay()); });
        return;
    }
    platform.screenCapture.shareableContent(
        [self = shared_from_this(), screen = *screen, region, excludeWindowNumbers,
         completion =
             std::move(completion)](const Expected<ShareableContent, PlatformError>& content) mutable {
            if (!content) return completion(content.error());
            self->startStream(screen, region, excludeWindowNumbers, *content, std::move(completion));
        });
}

void ScreenRecorder::startStream(const Screen& screen, const Rect& region,
                                 const std::vector<std::int64_t>& excludeWindowNumbers,
                                 const ShareableContent& content, StartCompletion completion) {
    const ShareableDisplay display{displayID(screen, platform.screens.mainDisplayID())};
    if (std::ranges::find(content.displays, display) == content.displays.end())
        return completion(RecordingError::noDisplay());

    auto newStream = platform.screenCapture.makeStream(
        {display, excludedWindows(content.windows, excludeWindowNumbers)},
        streamConfiguration(region, screen.frame, Preferences::resolution(platform.store),
                            Preferences::fps(platform.store)),
        streamDelegate);
    if (const auto added = newStream->addOutput(store, StreamOutputType::screen, frameQueue); !added)
        return completion(added.error());

    // The completion keeps stream and recorder alive, so that a stop meanwhile cannot cut the start short.
    newStream->start([self = shared_from_this(), newStream,
                      completion = std::move(completion)](const std::optional<PlatformError>& error) {
        if (error) return completion(RecordingError::streamStartFailed(*error));
        self->stream = newStream;
        self->armAutoStop();
        completion(std::nullopt);
    });
}

void ScreenRecorder::armAutoStop() {
    const MaxDuration duration = Preferences::maxDuration(platform.store);
    if (duration == MaxDuration::noLimit) return;
    autoStopWork = platform.mainQueue.asyncAfter(static_cast<double>(rawValue(duration)),
                                                 weakly(shared_from_this(), [](ScreenRecorder& recorder) {
                                                     if (recorder.onMaxDurationReached)
                                                         recorder.onMaxDurationReached();
                                                 }));
}

void ScreenRecorder::cancelAutoStop() {
    if (autoStopWork) autoStopWork->cancel();
    autoStopWork = nullptr;
}

void ScreenRecorder::stop(StopCompletion completion) {
    cancelAutoStop();
    const auto finish = [self = shared_from_this(), completion = std::move(completion)] {
        self->stream = nullptr;
        completion(self->takeFrames());
    };
    if (!stream) return platform.mainQueue.async(finish);
    // A stream that cannot be stopped still leaves its frames.
    stream->stop([finish](const std::optional<PlatformError>&) { finish(); });
}

std::vector<RecordedFrame> ScreenRecorder::stopNow() {
    cancelAutoStop();
    stream = nullptr;
    return takeFrames();
}

std::vector<RecordedFrame> ScreenRecorder::takeFrames() {
    std::vector<RecordedFrame> frames;
    frameQueue->sync([&] { frames = store->take(); });
    return frames;
}

std::int64_t ScreenRecorder::byteCount() const {
    std::int64_t count = 0;
    frameQueue->sync([&] { count = store->byteCount(); });
    return count;
}

} // namespace clipwren
