#pragma once

#include "platform/Memory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <thread>

namespace clipwren {

// What every memory does. `Subject` owns one that knows nothing yet:
//   Memory& memory();
//   void leave(std::int64_t bytes);  from now on that many are left
template <typename Subject>
class MemoryConformance : public testing::Test {
protected:
    Subject subject;
};
TYPED_TEST_SUITE_P(MemoryConformance);

TYPED_TEST_P(MemoryConformance, TellsWhatIsLeftNow) {
    EXPECT_FALSE(this->subject.memory().available());
    for (const std::int64_t bytes : {std::int64_t{1} << 40, std::int64_t{4096}, std::int64_t{0}}) {
        this->subject.leave(bytes);
        EXPECT_EQ(this->subject.memory().available(), bytes);
    }
}

TYPED_TEST_P(MemoryConformance, CanBeAskedOnAnyThread) {
    this->subject.leave(8192);
    const auto ask = [this] {
        for (int i = 0; i < 50; ++i)
            EXPECT_EQ(this->subject.memory().available(), 8192);
    };
    std::thread one(ask), two(ask);
    one.join();
    two.join();
}

REGISTER_TYPED_TEST_SUITE_P(MemoryConformance, TellsWhatIsLeftNow, CanBeAskedOnAnyThread);

} // namespace clipwren
