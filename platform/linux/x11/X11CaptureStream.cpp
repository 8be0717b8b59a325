#include "platform/linux/x11/X11CaptureStream.h"

#include <algorithm>
#include <csignal>
#include <new>
#include <utility>

namespace clipwren {

std::shared_ptr<CaptureStream> X11CaptureStream::create(X11CaptureWorker::Job job, MainQueue& mainQueue,
                                                        std::weak_ptr<StreamDelegate> delegate) {
    const std::shared_ptr<X11CaptureStream> stream(
        new X11CaptureStream(std::move(job), mainQueue, std::move(delegate)));
    // A sample in the queue needs the stream it came from for as long as it waits there, but must neither
    // keep the capture going nor end it on the queue's thread. So what users hold is an owner of its own,
    // whose release ends the capture; the stream itself may live a little longer.
    return {static_cast<CaptureStream*>(stream.get()),
            [held = std::shared_ptr<X11CaptureStream>(stream)](CaptureStream*) mutable {
                held->end();
                held.reset();
            }};
}

X11CaptureStream::X11CaptureStream(X11CaptureWorker::Job job, MainQueue& mainQueue,
                                   std::weak_ptr<StreamDelegate> delegate)
    : job(std::move(job)),
      mainQueue(mainQueue),
      delegate(std::move(delegate)) {}

X11CaptureStream::~X11CaptureStream() = default;

Expected<void, PlatformError> X11CaptureStream::addOutput(std::shared_ptr<StreamOutput> newOutput,
                                                          StreamOutputType type,
                                                          std::shared_ptr<SerialQueue> newQueue) {
    if (type != StreamOutputType::screen)
        return Unexpected{PlatformError{"Only the screen's picture can be recorded."}};
    if (output || thread.joinable()) return Unexpected{PlatformError{"The stream already has its output."}};
    output = std::move(newOutput);
    queue = std::move(newQueue);
    return {};
}

void X11CaptureStream::start(StreamCompletion completion) {
    if (thread.joinable() || !output || !signal.isValid())
        return complete(std::move(completion), PlatformError{"The recording cannot be started."});
    pendingStart = std::move(completion);
    // Signals are for the main thread.
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    thread = std::thread([this] { runWorker(); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void X11CaptureStream::stop(StreamCompletion completion) {
    {
        const std::lock_guard lock(mutex);
        if (thread.joinable() && !workerHasEnded && !pendingStop) {
            pendingStop = std::move(completion);
            signal.request(EndSignal::Request::finish);
            return;
        }
    }
    complete(std::move(completion), std::nullopt);
}

void X11CaptureStream::end() {
    signal.request(EndSignal::Request::abandon);
    if (thread.joinable()) thread.join();
    // Whoever releases the stream last may be the queue: it must not find itself in here.
    output.reset();
    queue.reset();
}

void X11CaptureStream::runWorker() {
    std::optional<PlatformError> error;
    try {
        error = X11CaptureWorker(job, *this, signal).run();
    } catch (const std::bad_alloc&) {
        error = PlatformError{"There is no memory left."};
    }
    const bool abandoned = signal.requested() == EndSignal::Request::abandon;
    const std::lock_guard lock(mutex);
    workerHasEnded = true;
    if (pendingStart)
        complete(std::exchange(pendingStart, nullptr),
                 error ? error : PlatformError{"The recording was ended before it began."});
    else if (error)
        mainQueue.async([weakDelegate = delegate, error = *error] {
            if (const auto strongDelegate = weakDelegate.lock()) strongDelegate->didStopWithError(error);
        });
    if (pendingStop)
        complete(std::exchange(pendingStop, nullptr),
                 abandoned ? std::optional(PlatformError{"The recording was dropped."}) : std::nullopt);
}

void X11CaptureStream::complete(StreamCompletion completion, std::optional<PlatformError> error) {
    mainQueue.async([completion = std::move(completion), error = std::move(error)] { completion(error); });
}

void X11CaptureStream::captureStarted() {
    const std::lock_guard lock(mutex);
    if (pendingStart) complete(std::exchange(pendingStart, nullptr), std::nullopt);
}

bool X11CaptureStream::takesSample() {
    return queue->pending() < static_cast<std::size_t>(std::max(job.configuration.queueDepth, 1));
}

void X11CaptureStream::deliver(StreamSample sample) {
    queue->async([self = shared_from_this(), receiver = output, sample = std::move(sample)] {
        receiver->didOutputSample(*self, sample, StreamOutputType::screen);
    });
}

} // namespace clipwren
