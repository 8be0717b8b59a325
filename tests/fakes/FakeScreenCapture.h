#pragma once

#include "platform/MainQueue.h"
#include "platform/ScreenCapture.h"

#include <memory>
#include <vector>

namespace clipwren {

// A stream whose samples, failures and completions the test decides on.
class FakeCaptureStream : public CaptureStream {
public:
    struct Control {
        ContentFilter filter;
        StreamConfiguration configuration;
        std::weak_ptr<StreamDelegate> delegate;
        std::shared_ptr<StreamOutput> output;
        std::shared_ptr<SerialQueue> queue;
        CaptureStream* stream = nullptr; // null once destroyed
        bool isRunning = false;
        int stopCount = 0;
        StreamCompletion pendingStart;
        StreamCompletion pendingStop;

        // Hands a sample to the output on its queue and waits for it; nothing unless the stream runs.
        void deliver(const StreamSample& sample, StreamOutputType type = StreamOutputType::screen);
        // A complete sample with this picture.
        void deliver(const Image& image, MediaTime time);
    };

    FakeCaptureStream(std::shared_ptr<Control> control, MainQueue& mainQueue,
                      class FakeScreenCapture& capture);
    ~FakeCaptureStream() override;

    Expected<void, PlatformError> addOutput(std::shared_ptr<StreamOutput> output, StreamOutputType type,
                                            std::shared_ptr<SerialQueue> queue) override;
    void start(StreamCompletion completion) override;
    void stop(StreamCompletion completion) override;
    bool cropsAndScales() const override { return true; }

private:
    std::shared_ptr<Control> control;
    MainQueue& mainQueue;
    FakeScreenCapture& capture;
};

class FakeScreenCapture : public ScreenCapture {
public:
    explicit FakeScreenCapture(MainQueue& mainQueue) : mainQueue(mainQueue) {}

    CapturePermission currentPermission = CapturePermission::granted;
    int permissionRequests = 0;
    ShareableContent content;
    std::optional<PlatformError> contentError;
    std::optional<PlatformError> outputError;
    std::optional<PlatformError> startError;
    std::optional<PlatformError> stopError;
    // While true, a start does not complete by itself: finishStart does it.
    bool holdsStart = false;
    std::vector<std::shared_ptr<FakeCaptureStream::Control>> streams;

    CapturePermission permission() const override { return currentPermission; }
    void requestPermission() override { ++permissionRequests; }
    void shareableContent(ContentCompletion completion) override;
    std::shared_ptr<CaptureStream> makeStream(const ContentFilter& filter,
                                              const StreamConfiguration& configuration,
                                              std::weak_ptr<StreamDelegate> delegate) override;

    // Completes the held starts, with `startError` if there is one.
    void finishStart();

private:
    friend class FakeCaptureStream;
    MainQueue& mainQueue;
};

} // namespace clipwren
