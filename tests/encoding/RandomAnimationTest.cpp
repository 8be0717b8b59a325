#include "tests/support/RandomAnimation.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace clipwren {
namespace {

// The same check as fuzz/GifFuzzer, on a fixed set of inputs.
TEST(RandomAnimation, ComesBackAsWritten) {
    for (unsigned seed = 0; seed < 150; ++seed) {
        std::mt19937 random(seed);
        std::vector<std::uint8_t> bytes(40 + random() % 400);
        for (std::uint8_t& byte : bytes)
            byte = static_cast<std::uint8_t>(random());
        ASSERT_EQ(checkRandomAnimation(bytes), "") << "seed " << seed;
    }
}

TEST(RandomAnimation, NoInputIsTheSmallestAnimation) { EXPECT_EQ(checkRandomAnimation({}), ""); }

} // namespace
} // namespace clipwren
