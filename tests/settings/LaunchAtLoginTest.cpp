#include "settings/LaunchAtLogin.h"

#include "tests/fakes/FakeServices.h"

#include <gtest/gtest.h>

namespace clipwren {
namespace {

struct LaunchAtLoginTest : testing::Test {
    FakeLoginItem item;
    FakeLog log;

    void write(bool isEnabled) { LaunchAtLogin::setEnabled(isEnabled, item, log); }
};

TEST_F(LaunchAtLoginTest, OnlyEnabledReadsAsEnabled) {
    for (const auto status :
         {LoginItemStatus::notRegistered, LoginItemStatus::requiresApproval, LoginItemStatus::notFound}) {
        item.current = status;
        EXPECT_FALSE(LaunchAtLogin::isEnabled(item));
    }
    item.current = LoginItemStatus::enabled;
    EXPECT_TRUE(LaunchAtLogin::isEnabled(item));
}

TEST_F(LaunchAtLoginTest, TheStatusesHaveTheirNumbers) {
    EXPECT_EQ(static_cast<int>(LoginItemStatus::notRegistered), 0);
    EXPECT_EQ(static_cast<int>(LoginItemStatus::enabled), 1);
}

TEST_F(LaunchAtLoginTest, WritingTrueRegistersWhateverTheStatus) {
    for (const auto status : {LoginItemStatus::notRegistered, LoginItemStatus::enabled,
                              LoginItemStatus::requiresApproval, LoginItemStatus::notFound}) {
        item.current = status;
        write(true);
        EXPECT_TRUE(LaunchAtLogin::isEnabled(item));
    }
    EXPECT_EQ(item.registrations, 4);
    EXPECT_EQ(item.unregistrations, 0);
}

TEST_F(LaunchAtLoginTest, WritingFalseUnregistersAllButTheUnregistered) {
    for (const auto status :
         {LoginItemStatus::enabled, LoginItemStatus::requiresApproval, LoginItemStatus::notFound}) {
        item.current = status;
        write(false);
        EXPECT_EQ(item.current, LoginItemStatus::notRegistered);
    }
    EXPECT_EQ(item.unregistrations, 3);

    item.refusal = PlatformError{"must not be asked"};
    write(false);
    EXPECT_EQ(item.unregistrations, 3);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(LaunchAtLoginTest, AFailedChangeIsOneLineInTheLogAndNothingElse) {
    item.refusal = PlatformError{"The folder is read-only."};
    write(true);
    EXPECT_FALSE(LaunchAtLogin::isEnabled(item));
    item.current = LoginItemStatus::enabled;
    write(false);
    EXPECT_TRUE(LaunchAtLogin::isEnabled(item));
    const std::string line = "Clipwren: launch-at-login toggle failed: The folder is read-only.";
    EXPECT_EQ(log.lines(), (std::vector{line, line}));
    EXPECT_EQ(item.registrations + item.unregistrations, 2);
}

} // namespace
} // namespace clipwren
