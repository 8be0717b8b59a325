#include "tests/conformance/EventLoop.h"
#include "tests/conformance/X11TestCapture.h"
#include "tests/conformance/X11TestServer.h"

#include <algorithm>
#include <functional>
#include <mutex>

namespace clipwren {

TEST(X11CapturePace, TakesEachPictureOfASourceOfItsRateOnce) {
    X11TestWindow window({}, {0, 0, 200, 100}, 0);
    std::vector<Pixel> expected;
    for (Pixel number = 0; number <= 30; ++number)
        expected.push_back(number);
    // On a machine that is busy otherwise, source and capture may both be held up for longer than a picture
    // stands; then it is tried again. That no picture comes twice, nor one after a later one, holds always.
    bool tookAll = false;
    for (int attempt = 0; attempt < 6 && !tookAll; ++attempt) {
        window.fill({0, 0, 200, 100}, 0);
        X11TestCapture subject;
        subject.begin(plain({0, 0, 200, 100}, 20));
        ASSERT_TRUE(subject.waitForPictures(1));
        const double begin = nowSeconds();
        for (int number = 1; number <= 30; ++number) {
            window.fill({0, 0, 200, 100}, static_cast<Pixel>(number));
            runEventLoop(std::max(begin + number * 0.05 - nowSeconds(), 0.001));
        }
        ASSERT_TRUE(subject.stop());
        std::vector<Pixel> numbers;
        for (const Image& picture : subject.keeper->pictures())
            numbers.push_back(picture.pixel(100, 50) & 0xFF);
        EXPECT_EQ(std::ranges::adjacent_find(numbers, std::ranges::greater_equal()), numbers.end());
        EXPECT_EQ(numbers.back(), 30u);
        tookAll = numbers == expected;
    }
    EXPECT_TRUE(tookAll);
}

TEST(X11CapturePace, TakesAFasterSourceAtItsOwnRate) {
    X11TestWindow window({}, {0, 0, 200, 100}, 0);
    X11TestCapture subject;
    subject.begin(plain({0, 0, 200, 100}, 15));
    ASSERT_TRUE(subject.waitForPictures(1));
    const double begin = nowSeconds();
    for (Pixel number = 1; nowSeconds() < begin + 2; ++number) {
        window.fill({0, 0, 200, 100}, number);
        runEventLoop(0.005);
    }
    const double lasted = nowSeconds() - begin;
    ASSERT_TRUE(subject.stop());
    const auto count = static_cast<double>(subject.keeper->pictures().size());
    EXPECT_LE(count, lasted * 15 + 3); // the first, one soon after it, and the last
    EXPECT_GE(count, lasted * 15 / 3); // a busy machine holds up the capture too
}

TEST(X11CapturePace, KeepsTheLastChangeBeforeTheStop) {
    X11TestWindow window({}, {0, 0, 200, 100}, 0);
    for (int round = 0; round < 5; ++round) {
        X11TestCapture subject;
        subject.begin(plain({0, 0, 200, 100}, 10));
        ASSERT_TRUE(subject.waitForPictures(1));
        // The second change comes long before its time.
        window.fill({0, 0, 200, 100}, 0x110000u + static_cast<Pixel>(round));
        ASSERT_TRUE(subject.waitForPictures(2));
        window.fill({0, 0, 200, 100}, 0x220000u + static_cast<Pixel>(round));
        ASSERT_TRUE(subject.stop());
        EXPECT_TRUE(subject.stopped.succeeded());
        EXPECT_EQ(subject.keeper->pictures().back().pixel(100, 50),
                  opaque | (0x220000u + static_cast<Pixel>(round)));
    }
}

TEST(X11CapturePace, KeepsTheLastChangeBeforeAPause) {
    X11TestWindow window({}, {0, 0, 200, 100}, 0);
    X11TestCapture subject;
    subject.begin(plain({0, 0, 200, 100}, 10));
    ASSERT_TRUE(subject.waitForPictures(1));
    for (Pixel number = 1; number <= 7; ++number)
        window.fill({0, 0, 200, 100}, number);
    EXPECT_TRUE(
        runEventLoopUntil([&] { return subject.keeper->pictures().back().pixel(9, 9) == (opaque | 7); }));
}

TEST(X11CapturePace, HoldsBackWhileTheQueueIsFullAndLosesNoState) {
    X11TestWindow window({}, {0, 0, 200, 100}, 0);
    X11TestCapture subject;
    auto configuration = plain({0, 0, 200, 100}, 30);
    configuration.queueDepth = 2;
    subject.begin(configuration);
    ASSERT_TRUE(subject.waitForPictures(1));
    std::mutex gate;
    std::unique_lock closed(gate);
    subject.queue->async([&] { const std::lock_guard wait(gate); });
    std::size_t most = 0;
    for (Pixel number = 1; number <= 40; ++number) {
        window.fill({0, 0, 200, 100}, number);
        runEventLoop(0.02);
        most = std::max(most, subject.queue->pending());
    }
    EXPECT_EQ(most, 2u);
    closed.unlock();
    EXPECT_TRUE(
        runEventLoopUntil([&] { return subject.keeper->pictures().back().pixel(9, 9) == (opaque | 40); }));
    EXPECT_LE(subject.keeper->pictures().size(), 5u);
}

TEST(X11CapturePace, DeliversWhatStillWaitsWhenTheStoppedStreamIsReleased) {
    X11TestWindow window({}, {0, 0, 200, 100}, 0);
    X11TestCapture subject;
    subject.begin(plain({0, 0, 200, 100}));
    ASSERT_TRUE(subject.waitForPictures(1));
    std::mutex gate;
    std::unique_lock closed(gate);
    subject.queue->async([&] { const std::lock_guard wait(gate); });
    window.fill({0, 0, 200, 100}, 0x55);
    subject.stream->stop(subject.stopped.completion());
    ASSERT_TRUE(runEventLoopUntil([&] { return subject.stopped.count > 0; }));
    subject.stream.reset();
    closed.unlock();
    subject.queue->sync([] {});
    EXPECT_EQ(subject.keeper->pictures().back().pixel(9, 9), opaque | 0x55);
}

} // namespace clipwren
