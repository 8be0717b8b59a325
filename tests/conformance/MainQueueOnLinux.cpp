#include "platform/linux/qt/QtMainQueue.h"
#include "tests/conformance/EventLoop.h"
#include "tests/conformance/MainQueueConformance.h"

#include <chrono>

namespace clipwren {

struct QtMainQueueSubject {
    QtMainQueue real;

    MainQueue& queue() { return real; }
    double now() {
        return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    }
    void pass(double seconds) { runEventLoop(seconds); }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, MainQueueConformance, QtMainQueueSubject);

TEST(QtMainQueue, DropsWhatWaitsWhenItEnds) {
    int ran = 0;
    const auto held = std::make_shared<int>(0);
    std::shared_ptr<WorkItem> item;
    std::shared_ptr<Timer> timer;
    {
        QtMainQueue queue;
        const auto work = [&ran, held] { ++ran; };
        queue.async(work);
        item = queue.asyncAfter(0, work);
        timer = queue.scheduledTimer(0.001, work);
        EXPECT_GT(held.use_count(), 1);
    }
    EXPECT_EQ(held.use_count(), 1);
    item->cancel();
    timer->invalidate();
    runEventLoop(0.02);
    EXPECT_EQ(ran, 0);
}

} // namespace clipwren
