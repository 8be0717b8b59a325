#pragma once

#include "platform/Application.h"

#include <gtest/gtest.h>

namespace clipwren {

// What every application does. `Subject` owns one:
//   Application& application();
//   bool runEnds(work);  runs the event loop with that work in it; true when the loop was ended by it
//   void comeBack();     the user comes back from another program
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

TYPED_TEST_P(ApplicationConformance, TellsItsObserversThatTheUserIsBack) {
    int calls = 0;
    auto observer = this->subject.application().observeDidBecomeActive([&] { ++calls; });
    this->subject.comeBack();
    EXPECT_EQ(calls, 1);
    this->subject.comeBack();
    EXPECT_EQ(calls, 2);
    observer = nullptr;
    this->subject.comeBack();
    EXPECT_EQ(calls, 2);
}

TYPED_TEST_P(ApplicationConformance, AnObserverMayEndItself) {
    int calls = 0;
    std::unique_ptr<ActivationObserver> observer =
        this->subject.application().observeDidBecomeActive([&calls, &observer] {
            observer = nullptr;
            ++calls;
        });
    this->subject.comeBack();
    this->subject.comeBack();
    EXPECT_EQ(calls, 1);
}

TYPED_TEST_P(ApplicationConformance, SaysWhatItIs) {
    const auto& application = this->subject.application();
    const BundleFacts facts = application.bundleFacts();
    EXPECT_EQ(facts.identifier, "app.clipwren.Clipwren");
    ASSERT_TRUE(facts.shortVersion);
    EXPECT_FALSE(facts.shortVersion->empty());
    EXPECT_TRUE(facts.executableModificationTime);
    EXPECT_GT(application.processIdentifier(), 1);
    EXPECT_FALSE(application.launchCommand().empty());
}

REGISTER_TYPED_TEST_SUITE_P(ApplicationConformance, TerminateEndsTheEventLoop, NothingElseEndsIt,
                            TellsItsObserversThatTheUserIsBack, AnObserverMayEndItself, SaysWhatItIs);

} // namespace clipwren
