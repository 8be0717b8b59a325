#pragma once

#include "platform/MainQueue.h"
#include "platform/ScreenCapture.h"
#include "platform/linux/capture/EndSignal.h"
#include "platform/linux/x11/X11CaptureWorker.h"

#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace clipwren {

// A capture stream of X11: the main thread's side of a capture worker and its thread.
class X11CaptureStream final : public CaptureStream,
                               private X11CaptureWorker::Client,
                               public std::enable_shared_from_this<X11CaptureStream> {
public:
    // Releasing what is returned ends the capture and waits for its thread. Samples that then still wait in
    // the queue are delivered all the same. The main queue outlives the stream; the delegate is called on it.
    static std::shared_ptr<CaptureStream> create(X11CaptureWorker::Job job, MainQueue& mainQueue,
                                                 std::weak_ptr<StreamDelegate> delegate);
    ~X11CaptureStream() override;

    // Ends the capture at once and waits for its thread; what is still to complete is queued as a failure. A
    // second call does nothing. Main thread.
    void end();

    Expected<void, PlatformError> addOutput(std::shared_ptr<StreamOutput> output, StreamOutputType type,
                                            std::shared_ptr<SerialQueue> queue) override;
    void start(StreamCompletion completion) override;
    void stop(StreamCompletion completion) override;
    bool cropsAndScales() const override { return true; }

private:
    X11CaptureStream(X11CaptureWorker::Job job, MainQueue& mainQueue, std::weak_ptr<StreamDelegate> delegate);

    void runWorker();
    void complete(StreamCompletion completion, std::optional<PlatformError> error);

    void captureStarted() override;
    bool takesSample() override;
    void deliver(StreamSample sample) override;

    const X11CaptureWorker::Job job;
    MainQueue& mainQueue;
    const std::weak_ptr<StreamDelegate> delegate;
    std::shared_ptr<StreamOutput> output;
    std::shared_ptr<SerialQueue> queue;
    EndSignal signal;
    std::thread thread;

    // Shared by both threads.
    std::mutex mutex;
    bool workerHasEnded = false;
    StreamCompletion pendingStart;
    StreamCompletion pendingStop;
};

} // namespace clipwren
