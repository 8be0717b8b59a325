#include "base/SerialQueue.h"

#include <gtest/gtest.h>

#include <vector>

namespace clipwren {
namespace {

TEST(SerialQueue, RunsItemsInOrderOnOneThreadOfItsOwn) {
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    {
        SerialQueue queue("test");
        for (int i = 0; i < 100; ++i)
            queue.async([&, i] {
                order.push_back(i);
                threads.push_back(std::this_thread::get_id());
            });
    } // Destruction runs what is still queued.
    ASSERT_EQ(order.size(), 100u);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
        EXPECT_EQ(threads[static_cast<std::size_t>(i)], threads.front());
    }
    EXPECT_NE(threads.front(), std::this_thread::get_id());
}

TEST(SerialQueue, SyncSeesEverythingQueuedBefore) {
    SerialQueue queue("test");
    int count = 0;
    for (int i = 0; i < 1000; ++i)
        queue.async([&count] { ++count; });
    int seen = 0;
    queue.sync([&] { seen = count; });
    EXPECT_EQ(seen, 1000);
}

TEST(SerialQueue, CountsWhatWaits) {
    SerialQueue queue("test");
    std::mutex gate;
    std::unique_lock closed(gate);
    bool begun = false;
    std::mutex beginMutex;
    std::condition_variable beginSignal;
    queue.async([&] {
        {
            const std::lock_guard lock(beginMutex);
            begun = true;
            beginSignal.notify_one();
        }
        const std::lock_guard wait(gate);
    });
    {
        std::unique_lock lock(beginMutex);
        beginSignal.wait(lock, [&] { return begun; });
    }
    queue.async([] {});
    queue.async([] {});
    EXPECT_EQ(queue.pending(), 2u);
    closed.unlock();
    queue.sync([] {});
    EXPECT_EQ(queue.pending(), 0u);
}

TEST(SerialQueueDeath, WaitingForItselfEndsTheProgram) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            SerialQueue queue("test");
            queue.sync([&queue] { queue.sync([] {}); });
        },
        "itself");
}

} // namespace
} // namespace clipwren
