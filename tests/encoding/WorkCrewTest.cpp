#include "encoding/WorkCrew.h"

#include <gtest/gtest.h>

#include <atomic>

namespace clipwren {
namespace {

TEST(WorkCrew, DoesEveryTaskOnce) {
    for (const unsigned helpers : {0u, 1u, 3u}) {
        WorkCrew crew(helpers);
        std::vector<int> results(500, 0);
        std::vector<std::shared_ptr<WorkCrew::Task>> tasks;
        for (std::size_t i = 0; i < results.size(); ++i)
            tasks.push_back(crew.start([&results, i] { results[i] += static_cast<int>(i); }));
        for (std::size_t i = 0; i < results.size(); ++i) {
            crew.await(*tasks[i]);
            EXPECT_EQ(results[i], static_cast<int>(i));
        }
    }
}

TEST(WorkCrew, AloneKeepsTheOrder) {
    WorkCrew crew(0);
    std::vector<int> order;
    crew.start([&] { order.push_back(1); });
    const auto last = crew.start([&] { order.push_back(2); });
    crew.start([&] { order.push_back(3); });
    crew.await(*last);
    EXPECT_EQ(order, (std::vector{1, 2}));
}

TEST(WorkCrew, EndsWithoutWhatWasNotBegun) {
    std::atomic<int> done = 0;
    {
        WorkCrew crew(0);
        crew.start([&] { ++done; });
    }
    EXPECT_EQ(done, 0);
}

} // namespace
} // namespace clipwren
