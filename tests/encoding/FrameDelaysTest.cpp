#include "encoding/FrameDelays.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace clipwren {
namespace {

MediaTime milliseconds(std::int64_t count) { return {count, 1000}; }
constexpr MediaTime invalid{1, 0};

TEST(FrameDelays, LastFrameLastsAFifteenthOfASecond) {
    EXPECT_DOUBLE_EQ(frameDelay(milliseconds(0), std::nullopt), 1.0 / 15);
}

TEST(FrameDelays, OthersLastUntilTheNext) {
    EXPECT_DOUBLE_EQ(frameDelay(milliseconds(0), milliseconds(100)), 0.1);
    EXPECT_DOUBLE_EQ(frameDelay(milliseconds(100), milliseconds(250)), 0.15);
    EXPECT_DOUBLE_EQ(frameDelay(milliseconds(250), std::nullopt), 1.0 / 15);
}

TEST(FrameDelays, NoDelayIsShorterThanTwoHundredths) {
    EXPECT_DOUBLE_EQ(frameDelay(milliseconds(0), milliseconds(10)), 0.02);
}

TEST(FrameDelays, TimesThatDoNotGrowCountAsAFifteenthOfASecond) {
    EXPECT_DOUBLE_EQ(frameDelay(milliseconds(500), milliseconds(500)), 1.0 / 15);
    EXPECT_DOUBLE_EQ(frameDelay(milliseconds(500), milliseconds(400)), 1.0 / 15);
}

TEST(FrameDelays, InvalidTimesCountAsAFifteenthOfASecond) {
    EXPECT_DOUBLE_EQ(frameDelay(invalid, milliseconds(400)), 1.0 / 15);
    EXPECT_DOUBLE_EQ(frameDelay(milliseconds(400), invalid), 1.0 / 15);
}

TEST(FrameDelays, HugeTimesStayFinite) {
    const MediaTime least{std::numeric_limits<std::int64_t>::min(), 1};
    const MediaTime most{std::numeric_limits<std::int64_t>::max(), 1};
    EXPECT_TRUE(std::isfinite(frameDelay(least, most)));
    EXPECT_TRUE(std::isfinite(frameDelay(most, least)));
}

TEST(PulsePhase, IsTheFractionOfTheTimeWithItsSign) {
    EXPECT_DOUBLE_EQ(pulsePhase(milliseconds(3750)), 0.75);
    EXPECT_DOUBLE_EQ(pulsePhase(milliseconds(-250)), -0.25);
    EXPECT_DOUBLE_EQ(pulsePhase(milliseconds(2000)), 0);
    EXPECT_DOUBLE_EQ(pulsePhase(invalid), 0);
}

TEST(DelayRounder, RoundsTheRunningTotal) {
    DelayRounder rounder;
    std::vector<std::int64_t> delays;
    for (int i = 0; i < 6; ++i)
        delays.push_back(rounder.hundredths(1.0 / 15));
    EXPECT_EQ(delays, (std::vector<std::int64_t>{7, 6, 7, 7, 6, 7}));
}

TEST(DelayRounder, NeverDriftsFromThePrescribedTotal) {
    for (const double delay : {1.0 / 15, 1.0 / 30, 1.0 / 24, 0.02, 0.0201, 0.0249, 0.025, 0.1234567}) {
        DelayRounder rounder;
        double prescribed = 0;
        std::int64_t written = 0;
        for (int i = 0; i < 20'000; ++i) {
            const std::int64_t hundredths = rounder.hundredths(delay);
            EXPECT_GE(hundredths, 2);
            prescribed += delay;
            written += hundredths;
            ASSERT_NEAR(static_cast<double>(written) / 100, prescribed, 0.005 + 1e-9) << delay << " at " << i;
        }
    }
}

TEST(DelayRounder, ADelayEndsAfterADay) {
    DelayRounder rounder;
    EXPECT_EQ(rounder.hundredths(1e18), 8'640'000);
    EXPECT_EQ(rounder.hundredths(0.05), 5);
}

} // namespace
} // namespace clipwren
