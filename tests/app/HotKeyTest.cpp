#include "app/HotKey.h"

#include "tests/fakes/FakePlatform.h"

#include <gtest/gtest.h>

namespace clipwren {
namespace {

constexpr std::uint32_t commandShift = HotKeyModifiers::command | HotKeyModifiers::shift;

class HotKeyTest : public testing::Test {
protected:
    FakePlatform platform;
    int presses = 0;

    std::unique_ptr<HotKey> make(std::uint32_t keyCode) {
        return HotKey::create(platform.hotKeys, platform.mainQueue, keyCode, commandShift,
                              [this] { ++presses; });
    }
    std::uint32_t onlyID() const { return platform.hotKeys.registrations.begin()->second.identifier.id; }
};

TEST_F(HotKeyTest, IdentifiersCountFromOneAndFailedOnesAreNotUsedAgain) {
    platform.hotKeys.refuses = true;
    EXPECT_EQ(make(5), nullptr);
    platform.hotKeys.refuses = false;
    const auto second = make(5);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(onlyID(), 2u);
}

TEST_F(HotKeyTest, TheFirstHotKeyGetsOneTheSecondTwo) {
    const auto first = make(5);
    EXPECT_EQ(onlyID(), 1u);
    const auto second = make(6);
    EXPECT_EQ(platform.hotKeys.registrations.rbegin()->second.identifier.id, 2u);
}

TEST_F(HotKeyTest, TheSignatureIsTheProgramsFourCharacterCode) {
    const auto hotKey = make(5);
    EXPECT_EQ(platform.hotKeys.registrations.begin()->second.identifier.signature, 0x4357524Eu);
}

TEST_F(HotKeyTest, TwoHotKeysInstallOneHandler) {
    const auto first = make(5);
    const auto second = make(6);
    EXPECT_EQ(platform.hotKeys.handlerInstallations, 1);
}

TEST_F(HotKeyTest, APressRunsTheClosureDeferred) {
    const auto hotKey = make(5);
    EXPECT_TRUE(platform.hotKeys.press(5, commandShift));
    EXPECT_EQ(presses, 0);
    platform.mainQueue.run();
    EXPECT_EQ(presses, 1);
}

TEST_F(HotKeyTest, AForeignSignatureStillRunsTheClosure) {
    const auto hotKey = make(5);
    platform.hotKeys.sendEvent(HotKeyID{0x12345678, onlyID()});
    platform.mainQueue.run();
    EXPECT_EQ(presses, 1);
}

TEST_F(HotKeyTest, AReleasedHotKeyRunsNothingAndIsUnregistered) {
    auto hotKey = make(5);
    const std::uint32_t id = onlyID();
    hotKey.reset();
    EXPECT_TRUE(platform.hotKeys.registrations.empty());
    platform.hotKeys.sendEvent(HotKeyID{0x4357524E, id});
    platform.mainQueue.run();
    EXPECT_EQ(presses, 0);
}

TEST_F(HotKeyTest, AFailedRegistrationLeavesNoClosure) {
    platform.hotKeys.refuses = true;
    EXPECT_EQ(make(5), nullptr);
    platform.hotKeys.sendEvent(HotKeyID{0x4357524E, 1});
    platform.mainQueue.run();
    EXPECT_EQ(presses, 0);
}

TEST_F(HotKeyTest, AnUnreadableEventRunsNothing) {
    const auto hotKey = make(5);
    platform.hotKeys.sendEvent(std::nullopt);
    platform.mainQueue.run();
    EXPECT_EQ(presses, 0);
}

TEST_F(HotKeyTest, EachHotKeyRunsItsOwnClosure) {
    int others = 0;
    const auto first = make(5);
    const auto second =
        HotKey::create(platform.hotKeys, platform.mainQueue, 6, commandShift, [&others] { ++others; });
    platform.hotKeys.press(6, commandShift);
    platform.mainQueue.run();
    EXPECT_EQ(presses, 0);
    EXPECT_EQ(others, 1);
}

} // namespace
} // namespace clipwren
