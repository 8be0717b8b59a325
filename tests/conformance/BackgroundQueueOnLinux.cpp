#include "platform/linux/ThreadBackgroundQueue.h"
#include "tests/conformance/BackgroundQueueConformance.h"

#include <future>
#include <optional>
#include <thread>

namespace clipwren {

struct ThreadBackgroundQueueSubject {
    std::optional<ThreadBackgroundQueue> real{std::in_place};

    BackgroundQueue& queue() { return *real; }
    void finish() { real.reset(); }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Thread, BackgroundQueueConformance, ThreadBackgroundQueueSubject);

TEST(ThreadBackgroundQueue, RunsOnAnotherThreadWhileThisOneGoesOn) {
    ThreadBackgroundQueue queue;
    std::promise<void> gate;
    std::promise<std::thread::id> done;
    queue.async([&, open = gate.get_future().share()] {
        open.wait();
        done.set_value(std::this_thread::get_id());
    });
    gate.set_value();
    EXPECT_NE(done.get_future().get(), std::this_thread::get_id());
}

TEST(ThreadBackgroundQueue, EndsOnlyAfterBegunWork) {
    bool isFinished = false;
    std::promise<void> begun, gate;
    std::optional<ThreadBackgroundQueue> queue(std::in_place);
    queue->async([&, open = gate.get_future().share()] {
        begun.set_value();
        open.wait();
        isFinished = true;
    });
    begun.get_future().wait();
    std::thread opener([&] { gate.set_value(); });
    queue.reset();
    EXPECT_TRUE(isFinished);
    opener.join();
}

} // namespace clipwren
