#include "tests/fakes/FakeScreenCapture.h"

#include <utility>

namespace clipwren {

void FakeCaptureStream::Control::deliver(const StreamSample& sample, StreamOutputType type) {
    if (!isRunning || !stream || !output || !queue) return;
    queue->sync([&] { output->didOutputSample(*stream, sample, type); });
}

void FakeCaptureStream::Control::deliver(const Image& image, MediaTime time) {
    deliver({.isValid = true,
             .status = static_cast<int>(FrameStatus::complete),
             .image = image,
             .presentationTime = time});
}

FakeCaptureStream::FakeCaptureStream(std::shared_ptr<Control> control, MainQueue& mainQueue,
                                     FakeScreenCapture& capture)
    : control(std::move(control)),
      mainQueue(mainQueue),
      capture(capture) {
    this->control->stream = this;
}

FakeCaptureStream::~FakeCaptureStream() {
    control->stream = nullptr;
    control->isRunning = false;
    control->output.reset();
    control->queue.reset();
    for (StreamCompletion* pending : {&control->pendingStart, &control->pendingStop})
        if (*pending)
            mainQueue.async([completion = std::exchange(*pending, nullptr)] {
                completion(PlatformError{"The stream is gone."});
            });
}

Expected<void, PlatformError> FakeCaptureStream::addOutput(std::shared_ptr<StreamOutput> output,
                                                           StreamOutputType,
                                                           std::shared_ptr<SerialQueue> queue) {
    if (capture.outputError) return Unexpected{*capture.outputError};
    control->output = std::move(output);
    control->queue = std::move(queue);
    return {};
}

void FakeCaptureStream::start(StreamCompletion completion) {
    control->pendingStart = std::move(completion);
    if (!capture.holdsStart) capture.finishStart();
}

void FakeCaptureStream::stop(StreamCompletion completion) {
    ++control->stopCount;
    control->isRunning = false;
    mainQueue.async([completion = std::move(completion), error = capture.stopError] { completion(error); });
}

void FakeScreenCapture::shareableContent(ContentCompletion completion) {
    mainQueue.async([completion = std::move(completion), error = contentError, answer = content] {
        if (error)
            completion(Unexpected{*error});
        else
            completion(answer);
    });
}

std::shared_ptr<CaptureStream> FakeScreenCapture::makeStream(const ContentFilter& filter,
                                                             const StreamConfiguration& configuration,
                                                             std::weak_ptr<StreamDelegate> delegate) {
    auto control = std::make_shared<FakeCaptureStream::Control>();
    control->filter = filter;
    control->configuration = configuration;
    control->delegate = std::move(delegate);
    streams.push_back(control);
    return std::make_shared<FakeCaptureStream>(control, mainQueue, *this);
}

void FakeScreenCapture::finishStart() {
    for (const auto& control : streams) {
        if (!control->pendingStart) continue;
        control->isRunning = !startError.has_value();
        mainQueue.async([completion = std::exchange(control->pendingStart, nullptr), error = startError] {
            completion(error);
        });
    }
}

} // namespace clipwren
