#pragma once

#include "platform/Session.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <thread>
#include <utility>

namespace clipwren {

// What every session does. `Subject` owns one that tells of everything and waits:
//   Session& session();
//   void willLock();      a locker is about to start; told by now, or soon
//   void willShutDown();  the computer is about to be switched off
//   int delays();         how many shutdown delays the computer waits for now
//   bool passUntil(std::function<bool()>);
template <typename Subject>
class SessionConformance : public testing::Test {
protected:
    Subject subject;
    int locks = 0;
    int shutdowns = 0;

    std::unique_ptr<SessionObserver> observe() {
        return subject.session().observeWillLock([this] { ++locks; });
    }
    std::shared_ptr<ShutdownDelay> delay() {
        return subject.session().delayShutdown("A test runs", [this] { ++shutdowns; });
    }
    bool isDelayedBy(int count) {
        return subject.passUntil([this, count] { return subject.delays() == count; });
    }
};
TYPED_TEST_SUITE_P(SessionConformance);

TYPED_TEST_P(SessionConformance, TellsObserversOfEachLock) {
    const auto one = this->observe();
    auto other = this->observe();
    this->subject.willLock();
    EXPECT_TRUE(this->subject.passUntil([this] { return this->locks == 2; }));
    other.reset();
    this->subject.willLock();
    EXPECT_TRUE(this->subject.passUntil([this] { return this->locks == 3; }));
}

TYPED_TEST_P(SessionConformance, AnObservationMayEndInsideItsOwnHandler) {
    std::unique_ptr<SessionObserver> observer;
    observer = this->subject.session().observeWillLock([this, &observer] {
        ++this->locks;
        observer.reset();
    });
    const auto other = this->observe();
    this->subject.willLock();
    EXPECT_TRUE(this->subject.passUntil([this] { return this->locks == 2; }));
    this->subject.willLock();
    EXPECT_TRUE(this->subject.passUntil([this] { return this->locks == 3; }));
}

TYPED_TEST_P(SessionConformance, DelaysTheShutdownAsLongAsAnyoneHasIt) {
    auto first = this->delay();
    EXPECT_TRUE(this->isDelayedBy(1));
    auto second = this->delay();
    EXPECT_TRUE(this->isDelayedBy(2));
    auto alsoFirst = first;
    first.reset();
    second.reset();
    EXPECT_TRUE(this->isDelayedBy(1));
    alsoFirst.reset();
    EXPECT_TRUE(this->isDelayedBy(0));
    EXPECT_EQ(this->shutdowns, 0);
}

TYPED_TEST_P(SessionConformance, TellsOfTheShutdownOnceADelay) {
    auto first = this->delay();
    EXPECT_TRUE(this->isDelayedBy(1));
    this->subject.willShutDown();
    EXPECT_TRUE(this->subject.passUntil([this] { return this->shutdowns == 1; }));
    const auto second = this->delay();
    EXPECT_TRUE(this->isDelayedBy(2));
    this->subject.willShutDown(); // after the first one was given up
    EXPECT_TRUE(this->subject.passUntil([this] { return this->shutdowns == 2; }));
    first.reset();
    EXPECT_TRUE(this->isDelayedBy(1));
    EXPECT_EQ(this->shutdowns, 2);
}

TYPED_TEST_P(SessionConformance, ADelayMayEndOnAnotherThread) {
    auto delay = this->delay();
    EXPECT_TRUE(this->isDelayedBy(1));
    std::thread([ended = std::move(delay)]() mutable { ended.reset(); }).join();
    EXPECT_TRUE(this->isDelayedBy(0));
}

REGISTER_TYPED_TEST_SUITE_P(SessionConformance, TellsObserversOfEachLock,
                            AnObservationMayEndInsideItsOwnHandler, DelaysTheShutdownAsLongAsAnyoneHasIt,
                            TellsOfTheShutdownOnceADelay, ADelayMayEndOnAnotherThread);

} // namespace clipwren
