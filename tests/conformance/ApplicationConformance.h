#pragma once

#include "platform/Application.h"

#include <gtest/gtest.h>

namespace clipwren {

// What every application does. `Subject` owns one:
//   Application& application();
//   bool runEnds(work);  runs the event loop with that work in it; true when the loop was ended by it
template <typename Subject>
class ApplicationConformance : public testing::Test {
protected:
    Subject subject;
};
TYPED_TEST_SUITE_P(ApplicationConformance);

TYPED_TEST_P(ApplicationConformance, TerminateEndsTheEventLoop) {
    auto& application = this->subject.application();
    EXPECT_TRUE(this->subject.runEnds([&] { application.terminate(); }));
}

TYPED_TEST_P(ApplicationConformance, NothingElseEndsIt) {
    auto& application = this->subject.application();
    EXPECT_FALSE(this->subject.runEnds([&] {
        application.setActivationPolicy(ActivationPolicy::regular);
        application.activateIgnoringOtherApps();
        application.setActivationPolicy(ActivationPolicy::accessory);
    }));
}

REGISTER_TYPED_TEST_SUITE_P(ApplicationConformance, TerminateEndsTheEventLoop, NothingElseEndsIt);

} // namespace clipwren
