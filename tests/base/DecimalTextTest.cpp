#include "base/DecimalText.h"

#include <gtest/gtest.h>

namespace clipwren {
namespace {

TEST(DecimalText, RoundsAsPrintfDoes) {
    EXPECT_EQ(decimalText(0, 1), "0.0");
    EXPECT_EQ(decimalText(9.96, 1), "10.0");
    EXPECT_EQ(decimalText(0.25, 1), "0.2");
    EXPECT_EQ(decimalText(10.5, 0), "10");
    EXPECT_EQ(decimalText(1e300, 0).size(), 301u);
}

} // namespace
} // namespace clipwren
