#include "platform/linux/OwnExecutable.h"

#include <gtest/gtest.h>

namespace clipwren {
namespace {

TEST(OwnExecutable, IsThisProgram) {
    const auto path = ownExecutable();
    EXPECT_TRUE(path.is_absolute());
    EXPECT_EQ(path.filename(), "linux_tests");
    EXPECT_TRUE(std::filesystem::is_regular_file(path));
}

TEST(OwnExecutable, QuotesForTheShell) {
    EXPECT_EQ(shellQuoted("/usr/bin/clipwren"), "'/usr/bin/clipwren'");
    EXPECT_EQ(shellQuoted("/it's a \"$test\"\\"), R"('/it'\''s a "$test"\')");
    EXPECT_EQ(shellQuoted(""), "''");
}

} // namespace
} // namespace clipwren
