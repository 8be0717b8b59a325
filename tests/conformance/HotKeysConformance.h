#pragma once

#include "platform/HotKeys.h"
#include "platform/Windows.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace clipwren {

// What every watcher of hot keys does. `Subject` owns one:
//   HotKeys& hotKeys();
//   void press(std::uint32_t modifiers);   presses and releases G with these, and lets it arrive
template <typename Subject>
class HotKeysConformance : public testing::Test {
protected:
    static constexpr std::uint32_t both = HotKeyModifiers::command | HotKeyModifiers::shift;
    static constexpr HotKeyID first{0x4357524E, 1};
    static constexpr HotKeyID second{0x4357524E, 2};

    Subject subject;
    std::vector<std::optional<HotKeyID>> heard;

    HotKeysConformance() {
        subject.hotKeys().installEventHandler([this](std::optional<HotKeyID> id) { heard.push_back(id); });
    }
    std::optional<HotKeyReference> watch(std::uint32_t modifiers, HotKeyID identifier) {
        return subject.hotKeys().registerHotKey(KeyCode::g, modifiers, identifier);
    }
};
TYPED_TEST_SUITE_P(HotKeysConformance);

TYPED_TEST_P(HotKeysConformance, TellsEachPressOnce) {
    ASSERT_TRUE(this->watch(this->both, this->first));
    this->subject.press(this->both);
    this->subject.press(this->both);
    EXPECT_EQ(this->heard, (std::vector<std::optional<HotKeyID>>{this->first, this->first}));
}

TYPED_TEST_P(HotKeysConformance, TellsWhichOneWasPressed) {
    ASSERT_TRUE(this->watch(this->both, this->first));
    ASSERT_TRUE(this->watch(HotKeyModifiers::command, this->second));
    this->subject.press(HotKeyModifiers::command);
    this->subject.press(this->both);
    EXPECT_EQ(this->heard, (std::vector<std::optional<HotKeyID>>{this->second, this->first}));
}

TYPED_TEST_P(HotKeysConformance, HearsNoOtherCombination) {
    ASSERT_TRUE(this->watch(this->both, this->first));
    this->subject.press(0);
    this->subject.press(HotKeyModifiers::shift);
    this->subject.press(HotKeyModifiers::command);
    EXPECT_TRUE(this->heard.empty());
}

TYPED_TEST_P(HotKeysConformance, RefusesWhatIsTaken) {
    const auto reference = this->watch(this->both, this->first);
    ASSERT_TRUE(reference);
    EXPECT_FALSE(this->watch(this->both, this->second));
    this->subject.hotKeys().unregisterHotKey(*reference);
    EXPECT_TRUE(this->watch(this->both, this->second));
}

TYPED_TEST_P(HotKeysConformance, HearsNothingAfterUnregistering) {
    const auto reference = this->watch(this->both, this->first);
    ASSERT_TRUE(reference);
    this->subject.hotKeys().unregisterHotKey(*reference);
    this->subject.hotKeys().unregisterHotKey(*reference);
    this->subject.press(this->both);
    EXPECT_TRUE(this->heard.empty());
}

TYPED_TEST_P(HotKeysConformance, GivesEachRegistrationAReferenceOfItsOwn) {
    const auto one = this->watch(this->both, this->first);
    const auto other = this->watch(HotKeyModifiers::command, this->second);
    ASSERT_TRUE(one && other);
    EXPECT_NE(*one, *other);
    this->subject.hotKeys().unregisterHotKey(*one);
    this->subject.press(HotKeyModifiers::command);
    EXPECT_EQ(this->heard, (std::vector<std::optional<HotKeyID>>{this->second}));
}

REGISTER_TYPED_TEST_SUITE_P(HotKeysConformance, TellsEachPressOnce, TellsWhichOneWasPressed,
                            HearsNoOtherCombination, RefusesWhatIsTaken, HearsNothingAfterUnregistering,
                            GivesEachRegistrationAReferenceOfItsOwn);

} // namespace clipwren
