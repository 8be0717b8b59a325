#include "base/CheckedArithmetic.h"

#include <gtest/gtest.h>

namespace clipwren {
namespace {

constexpr auto largest = std::numeric_limits<std::int64_t>::max();

TEST(CheckedArithmetic, ComputesUpToTheLimit) {
    EXPECT_EQ(checkedAdd(largest - 1, 1), largest);
    EXPECT_EQ(checkedMultiply(largest / 7, 7), largest / 7 * 7);
    EXPECT_EQ(checkedMultiply(largest, 0), 0);
}

TEST(CheckedArithmeticDeath, AnOverflowEndsTheProgram) {
    EXPECT_DEATH(checkedAdd(largest, 1), "overflow");
    EXPECT_DEATH(checkedMultiply(largest / 2, 3), "overflow");
}

} // namespace
} // namespace clipwren
