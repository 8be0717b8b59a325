#pragma once

#include "platform/MainQueue.h"
#include "platform/ScreenCapture.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace clipwren {

// Keeps the samples of a stream and checks what holds for each.
class SampleKeeper : public StreamOutput {
public:
    void didOutputSample(CaptureStream&, const StreamSample& sample, StreamOutputType type) override {
        EXPECT_EQ(type, StreamOutputType::screen);
        EXPECT_TRUE(sample.isValid);
        EXPECT_TRUE(sample.status.has_value());
        EXPECT_TRUE(sample.presentationTime.isValid());
        const std::lock_guard lock(mutex);
        threads.push_back(std::this_thread::get_id());
        if (!samples.empty()) {
            EXPECT_GT((sample.presentationTime - samples.back().presentationTime).seconds(), 0);
        }
        samples.push_back(sample);
    }

    std::vector<StreamSample> all() const {
        const std::lock_guard lock(mutex);
        return samples;
    }
    // The complete ones' pictures.
    std::vector<Image> pictures() const {
        std::vector<Image> result;
        for (const StreamSample& sample : all())
            if (sample.status == static_cast<int>(FrameStatus::complete) && sample.image)
                result.push_back(*sample.image);
        return result;
    }
    std::vector<std::thread::id> calledOn() const {
        const std::lock_guard lock(mutex);
        return threads;
    }

private:
    mutable std::mutex mutex;
    std::vector<StreamSample> samples;
    std::vector<std::thread::id> threads;
};

// Counts how often a completion comes, and with what.
struct CompletionWitness {
    int count = 0;
    std::optional<PlatformError> error;
    std::thread::id thread;

    StreamCompletion completion() {
        return [this](const std::optional<PlatformError>& result) {
            ++count;
            error = result;
            thread = std::this_thread::get_id();
        };
    }
    bool succeeded() const { return count == 1 && !error; }
    bool failed() const { return count == 1 && error && !error->localizedDescription.empty(); }
};

inline StreamConfiguration captureConfiguration(const Rect& sourceRect, int width, int height, int fps = 30) {
    return {.sourceRect = sourceRect,
            .width = width,
            .height = height,
            .destinationRect = {0, 0, static_cast<double>(width), static_cast<double>(height)},
            .scalesToFit = true,
            .minimumFrameInterval = {1, fps},
            .queueDepth = 6,
            .pixelFormat = pixelFormatBGRA};
}

// What every screen capture does. `Subject` owns one:
//   ScreenCapture& capture();
//   bool passUntil(condition);  lets the main queue work on this thread until then; false after some seconds
//   void pass(double seconds);  lets it work for that time
//   void change();              makes a picture of every running stream's region differ from the one before
template <typename Subject>
class ScreenCaptureConformance : public testing::Test {
protected:
    Subject subject;
    std::shared_ptr<SerialQueue> queue = std::make_shared<SerialQueue>("frames");
    std::shared_ptr<SampleKeeper> keeper = std::make_shared<SampleKeeper>();

    std::shared_ptr<CaptureStream> makeStream() {
        std::optional<ShareableContent> content;
        subject.capture().shareableContent([&](const auto& answer) { content = *answer; });
        EXPECT_TRUE(subject.passUntil([&] { return content.has_value(); }));
        EXPECT_FALSE(content->displays.empty());
        auto stream = subject.capture().makeStream({.display = content->displays.front()},
                                                   captureConfiguration({20, 20, 64, 48}, 64, 48), {});
        EXPECT_TRUE(stream->addOutput(keeper, StreamOutputType::screen, queue));
        return stream;
    }

    std::shared_ptr<CaptureStream> startedStream() {
        auto stream = makeStream();
        CompletionWitness started;
        stream->start(started.completion());
        EXPECT_TRUE(subject.passUntil([&] { return started.count > 0; }));
        EXPECT_TRUE(started.succeeded());
        return stream;
    }

    bool changeUntilPictures(std::size_t count) {
        return subject.passUntil([&] {
            if (keeper->pictures().size() >= count) return true;
            subject.change();
            return false;
        });
    }
};
TYPED_TEST_SUITE_P(ScreenCaptureConformance);

TYPED_TEST_P(ScreenCaptureConformance, TellsTheContentLaterOnce) {
    int count = 0;
    this->subject.capture().shareableContent([&](const auto& answer) {
        ++count;
        ASSERT_TRUE(answer);
        EXPECT_FALSE(answer->displays.empty());
    });
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(this->subject.passUntil([&] { return count > 0; }));
    this->subject.pass(0.05);
    EXPECT_EQ(count, 1);
}

TYPED_TEST_P(ScreenCaptureConformance, StartsLaterOnTheMainThreadOnce) {
    const auto stream = this->makeStream();
    CompletionWitness started;
    stream->start(started.completion());
    EXPECT_EQ(started.count, 0);
    EXPECT_TRUE(this->subject.passUntil([&] { return started.count > 0; }));
    this->subject.pass(0.1);
    EXPECT_TRUE(started.succeeded());
    EXPECT_EQ(started.thread, std::this_thread::get_id());
}

TYPED_TEST_P(ScreenCaptureConformance, DeliversPicturesOfTheConfiguredSizeOnTheQueue) {
    const auto stream = this->startedStream();
    ASSERT_TRUE(this->changeUntilPictures(3));
    std::thread::id queueThread;
    this->queue->sync([&] { queueThread = std::this_thread::get_id(); });
    for (const auto& thread : this->keeper->calledOn())
        EXPECT_EQ(thread, queueThread);
    for (const Image& picture : this->keeper->pictures()) {
        EXPECT_EQ(picture.width(), 64);
        EXPECT_EQ(picture.height(), 48);
    }
}

TYPED_TEST_P(ScreenCaptureConformance, DeliversNoPictureTwice) {
    const auto stream = this->startedStream();
    ASSERT_TRUE(this->changeUntilPictures(4));
    this->subject.pass(0.2);
    const auto pictures = this->keeper->pictures();
    for (std::size_t i = 1; i < pictures.size(); ++i)
        EXPECT_FALSE(pictures[i].blocksDiffering(pictures[i - 1]).empty());
}

TYPED_TEST_P(ScreenCaptureConformance, StopsLaterOnceAndIsSilentThen) {
    const auto stream = this->startedStream();
    ASSERT_TRUE(this->changeUntilPictures(1));
    CompletionWitness stopped;
    stream->stop(stopped.completion());
    EXPECT_EQ(stopped.count, 0);
    EXPECT_TRUE(this->subject.passUntil([&] { return stopped.count > 0; }));
    EXPECT_TRUE(stopped.succeeded());
    EXPECT_EQ(stopped.thread, std::this_thread::get_id());
    this->queue->sync([] {});
    const auto count = this->keeper->all().size();
    this->subject.change();
    this->subject.pass(0.2);
    this->queue->sync([] {});
    EXPECT_EQ(this->keeper->all().size(), count);
    EXPECT_EQ(stopped.count, 1);
}

TYPED_TEST_P(ScreenCaptureConformance, CompletesASecondStopToo) {
    const auto stream = this->startedStream();
    CompletionWitness first, second;
    stream->stop(first.completion());
    EXPECT_TRUE(this->subject.passUntil([&] { return first.count > 0; }));
    stream->stop(second.completion());
    EXPECT_TRUE(this->subject.passUntil([&] { return second.count > 0; }));
}

TYPED_TEST_P(ScreenCaptureConformance, IsSilentOnceDestroyed) {
    auto stream = this->startedStream();
    ASSERT_TRUE(this->changeUntilPictures(1));
    stream.reset();
    this->queue->sync([] {});
    const auto count = this->keeper->all().size();
    this->subject.change();
    this->subject.pass(0.2);
    this->queue->sync([] {});
    EXPECT_EQ(this->keeper->all().size(), count);
    // Neither the output nor the queue is held any longer.
    EXPECT_EQ(this->keeper.use_count(), 1);
    EXPECT_EQ(this->queue.use_count(), 1);
}

TYPED_TEST_P(ScreenCaptureConformance, FailsAPendingStartWhenDestroyed) {
    auto stream = this->makeStream();
    CompletionWitness started;
    stream->start(started.completion());
    stream.reset();
    EXPECT_TRUE(this->subject.passUntil([&] { return started.count > 0; }));
    this->subject.pass(0.05);
    EXPECT_EQ(started.count, 1);
}

REGISTER_TYPED_TEST_SUITE_P(ScreenCaptureConformance, TellsTheContentLaterOnce,
                            StartsLaterOnTheMainThreadOnce, DeliversPicturesOfTheConfiguredSizeOnTheQueue,
                            DeliversNoPictureTwice, StopsLaterOnceAndIsSilentThen, CompletesASecondStopToo,
                            IsSilentOnceDestroyed, FailsAPendingStartWhenDestroyed);

} // namespace clipwren
