#include "base/MediaTime.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace clipwren {
namespace {

TEST(MediaTime, DifferencesAreExact) {
    EXPECT_EQ((MediaTime{16, 15} - MediaTime{15, 15}), (MediaTime{1, 15}));
    EXPECT_EQ((MediaTime{1, 2} - MediaTime{1, 3}), (MediaTime{1, 6}));
    EXPECT_EQ((MediaTime::nanoseconds(5'000'000'001) - MediaTime::nanoseconds(5'000'000'000)),
              MediaTime::nanoseconds(1));
}

TEST(MediaTime, AnInvalidTimeStaysInvalid) {
    EXPECT_TRUE(std::isnan(MediaTime{}.seconds()));
    EXPECT_TRUE(std::isnan((MediaTime{1, 15} - MediaTime{}).seconds()));
    EXPECT_TRUE(std::isnan((MediaTime{} - MediaTime{1, 15}).seconds()));
}

TEST(MediaTime, TimescalesWithoutACommonOneAreRoundedToNanoseconds) {
    const MediaTime difference = MediaTime{3, 1'999'999'973} - MediaTime{1, 1'999'999'943};
    EXPECT_EQ(difference.timescale, 1'000'000'000);
    EXPECT_NEAR(difference.seconds(), 1e-9, 1e-9);
}

TEST(MediaTime, HugeValuesDoNotWrapAround) {
    const MediaTime huge{std::numeric_limits<std::int64_t>::max(), 1};
    EXPECT_TRUE(std::isnan((huge - MediaTime{-1, 1}).seconds()));
    EXPECT_EQ((huge - huge).seconds(), 0);
}

} // namespace
} // namespace clipwren
