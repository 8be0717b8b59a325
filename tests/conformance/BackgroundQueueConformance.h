#pragma once

#include "platform/BackgroundQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>

namespace clipwren {

// What every background queue does. `Subject` owns one:
//   BackgroundQueue& queue();
//   void finish();  returns when everything given has run, however that comes about
template <typename Subject>
class BackgroundQueueConformance : public testing::Test {
protected:
    Subject subject;
};
TYPED_TEST_SUITE_P(BackgroundQueueConformance);

TYPED_TEST_P(BackgroundQueueConformance, RunsEveryItemOnce) {
    std::atomic<int> sum = 0;
    for (int number = 1; number <= 100; ++number)
        this->subject.queue().async([&sum, number] { sum += number; });
    this->subject.finish();
    EXPECT_EQ(sum, 5050);
}

TYPED_TEST_P(BackgroundQueueConformance, ReleasesWhatTheWorkHeld) {
    const auto held = std::make_shared<int>(0);
    this->subject.queue().async([held] {});
    this->subject.finish();
    EXPECT_EQ(held.use_count(), 1);
}

REGISTER_TYPED_TEST_SUITE_P(BackgroundQueueConformance, RunsEveryItemOnce, ReleasesWhatTheWorkHeld);

} // namespace clipwren
