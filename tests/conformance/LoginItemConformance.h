#pragma once

#include "platform/LoginItem.h"

#include <gtest/gtest.h>

namespace clipwren {

// What every login item does. `Subject` owns one that is not registered, of a program that exists:
//   LoginItem& loginItem();
//   void disable();             the user switches it off in the desktop's own settings
//   void refuse(bool refuses);  the desktop refuses every change, or not any more
template <typename Subject>
class LoginItemConformance : public testing::Test {
protected:
    Subject subject;
    LoginItem& item = subject.loginItem();
};
TYPED_TEST_SUITE_P(LoginItemConformance);

TYPED_TEST_P(LoginItemConformance, BeginsNotRegistered) {
    EXPECT_EQ(this->item.status(), LoginItemStatus::notRegistered);
}

TYPED_TEST_P(LoginItemConformance, IsEnabledByRegisteringAndGoneByUnregistering) {
    EXPECT_TRUE(this->item.registerItem());
    EXPECT_EQ(this->item.status(), LoginItemStatus::enabled);
    EXPECT_TRUE(this->item.registerItem());
    EXPECT_EQ(this->item.status(), LoginItemStatus::enabled);
    EXPECT_TRUE(this->item.unregisterItem());
    EXPECT_EQ(this->item.status(), LoginItemStatus::notRegistered);
    EXPECT_TRUE(this->item.unregisterItem());
}

TYPED_TEST_P(LoginItemConformance, NeedsApprovalOnceTheUserHasSwitchedItOff) {
    ASSERT_TRUE(this->item.registerItem());
    this->subject.disable();
    EXPECT_EQ(this->item.status(), LoginItemStatus::requiresApproval);
    EXPECT_TRUE(this->item.registerItem());
    EXPECT_EQ(this->item.status(), LoginItemStatus::enabled);
    this->subject.disable();
    EXPECT_TRUE(this->item.unregisterItem());
    EXPECT_EQ(this->item.status(), LoginItemStatus::notRegistered);
}

TYPED_TEST_P(LoginItemConformance, ARefusedChangeChangesNothingAndSaysWhy) {
    this->subject.refuse(true);
    const auto refused = this->item.registerItem();
    ASSERT_FALSE(refused);
    EXPECT_FALSE(refused.error().localizedDescription.empty());
    EXPECT_NE(this->item.status(), LoginItemStatus::enabled);
    this->subject.refuse(false);
    EXPECT_TRUE(this->item.registerItem());
    EXPECT_EQ(this->item.status(), LoginItemStatus::enabled);
}

REGISTER_TYPED_TEST_SUITE_P(LoginItemConformance, BeginsNotRegistered,
                            IsEnabledByRegisteringAndGoneByUnregistering,
                            NeedsApprovalOnceTheUserHasSwitchedItOff, ARefusedChangeChangesNothingAndSaysWhy);

} // namespace clipwren
