#include "base/LocalTime.h"

#include <gtest/gtest.h>

namespace clipwren {
namespace {

TEST(LocalTime, TakesItsPartsFromTheFormat) {
    const LocalTime time{2025, 3, 14, 9, 26, 53};
    EXPECT_EQ(dateText(time, "yyyy-MM-dd HH:mm"), "2025-03-14 09:26");
    EXPECT_EQ(dateText(time, "yyyy-MM-dd_HH-mm-ss"), "2025-03-14_09-26-53");
}

TEST(LocalTime, PadsWithZerosAndNeverCuts) {
    EXPECT_EQ(dateText({7, 1, 2, 0, 0, 0}, "yyyy/MM/dd HH:mm:ss"), "0007/01/02 00:00:00");
    EXPECT_EQ(dateText({12025, 12, 31, 23, 59, 59}, "yyyyMMdd"), "120251231");
}

TEST(LocalTime, LeavesOtherCharactersAlone) {
    EXPECT_EQ(dateText({2025, 3, 14}, "· d M"), "· d M");
    EXPECT_EQ(dateText({2025, 3, 14}, ""), "");
}

} // namespace
} // namespace clipwren
