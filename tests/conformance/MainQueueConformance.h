#pragma once

#include "platform/MainQueue.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace clipwren {

// What every main queue does. `Subject` owns one:
//   MainQueue& queue();
//   double now();               seconds on the clock that delays count on
//   void pass(double seconds);  lets the queue work on this thread for that time; may be nested
template <typename Subject>
class MainQueueConformance : public testing::Test {
protected:
    Subject subject;
    std::vector<std::string> ran;

    std::function<void()> noting(std::string name) {
        return [this, name = std::move(name)] { ran.push_back(name); };
    }
};
TYPED_TEST_SUITE_P(MainQueueConformance);

TYPED_TEST_P(MainQueueConformance, RunsLaterInTheOrderGiven) {
    for (const char* name : {"a", "b", "c", "d"})
        this->subject.queue().async(this->noting(name));
    EXPECT_TRUE(this->ran.empty());
    this->subject.pass(0.02);
    EXPECT_EQ(this->ran, (std::vector<std::string>{"a", "b", "c", "d"}));
}

TYPED_TEST_P(MainQueueConformance, WorkOfWorkComesAfterWhatWaits) {
    auto& queue = this->subject.queue();
    queue.async([&] {
        queue.async(this->noting("inner"));
        this->ran.push_back("outer");
    });
    queue.async(this->noting("second"));
    this->subject.pass(0.02);
    EXPECT_EQ(this->ran, (std::vector<std::string>{"outer", "second", "inner"}));
}

TYPED_TEST_P(MainQueueConformance, TakesWorkFromAnyThreadAndRunsItOnThisOne) {
    constexpr int count = 200;
    std::vector<int> first, second;
    bool isHere = true;
    const auto here = std::this_thread::get_id();
    const auto feed = [&](std::vector<int>& into) {
        for (int number = 0; number < count; ++number)
            this->subject.queue().async([&, number] {
                into.push_back(number);
                isHere = isHere && std::this_thread::get_id() == here;
            });
    };
    std::thread one([&] { feed(first); }), two([&] { feed(second); });
    one.join();
    two.join();
    EXPECT_TRUE(first.empty());
    this->subject.pass(0.1);
    std::vector<int> expected;
    for (int number = 0; number < count; ++number)
        expected.push_back(number);
    EXPECT_EQ(first, expected);
    EXPECT_EQ(second, expected);
    EXPECT_TRUE(isHere);
}

TYPED_TEST_P(MainQueueConformance, GoesOnInsideANestedLoop) {
    auto& queue = this->subject.queue();
    const auto timer = queue.scheduledTimer(0.01, this->noting("tick"));
    queue.async([&] {
        this->ran.push_back("begin");
        this->subject.pass(0.1);
        timer->invalidate();
        this->ran.push_back("end");
    });
    queue.async(this->noting("next"));
    this->subject.pass(0.02);
    ASSERT_GE(this->ran.size(), 4u);
    EXPECT_EQ(this->ran[0], "begin");
    EXPECT_EQ(this->ran[1], "next");
    EXPECT_EQ(this->ran[2], "tick");
    EXPECT_EQ(this->ran.back(), "end");
}

TYPED_TEST_P(MainQueueConformance, DelayedWorkRunsOnceAndNotEarly) {
    const double start = this->subject.now();
    double ranAt = -1;
    this->subject.queue().asyncAfter(0.03, [&] {
        this->ran.push_back("late");
        ranAt = this->subject.now();
    });
    this->subject.pass(0.15);
    EXPECT_EQ(this->ran, std::vector<std::string>{"late"});
    EXPECT_GE(ranAt - start, 0.03 - 1e-9);
}

TYPED_TEST_P(MainQueueConformance, DelayedWorkComesInTheOrderOfItsTime) {
    auto& queue = this->subject.queue();
    queue.asyncAfter(0.06, this->noting("second"));
    queue.asyncAfter(0.02, this->noting("first"));
    this->subject.pass(0.2);
    EXPECT_EQ(this->ran, (std::vector<std::string>{"first", "second"}));
}

TYPED_TEST_P(MainQueueConformance, NoDelayStillMeansLater) {
    this->subject.queue().asyncAfter(0, this->noting("zero"));
    EXPECT_TRUE(this->ran.empty());
    this->subject.pass(0.05);
    EXPECT_EQ(this->ran, std::vector<std::string>{"zero"});
}

TYPED_TEST_P(MainQueueConformance, CancelledWorkDoesNotRun) {
    const auto item = this->subject.queue().asyncAfter(0.02, this->noting("cancelled"));
    this->subject.queue().asyncAfter(0.02, this->noting("kept"));
    item->cancel();
    item->cancel();
    this->subject.pass(0.1);
    EXPECT_EQ(this->ran, std::vector<std::string>{"kept"});
}

TYPED_TEST_P(MainQueueConformance, WorkThatIsDueCanStillBeCancelled) {
    auto& queue = this->subject.queue();
    std::shared_ptr<WorkItem> item;
    queue.asyncAfter(0.02, [&] { item->cancel(); });
    item = queue.asyncAfter(0.02, this->noting("cancelled"));
    this->subject.pass(0.1);
    EXPECT_TRUE(this->ran.empty());
}

TYPED_TEST_P(MainQueueConformance, CancellingAfterTheWorkDoesNothing) {
    const auto item = this->subject.queue().asyncAfter(0.01, this->noting("ran"));
    this->subject.pass(0.1);
    item->cancel();
    this->subject.pass(0.02);
    EXPECT_EQ(this->ran, std::vector<std::string>{"ran"});
}

TYPED_TEST_P(MainQueueConformance, WorkMayCancelItself) {
    std::shared_ptr<WorkItem> item;
    const std::string witness = "still whole";
    item = this->subject.queue().asyncAfter(0.01, [&, witness] {
        item->cancel();
        item = nullptr;
        this->subject.pass(0.02);
        this->ran.push_back(witness);
    });
    this->subject.pass(0.15);
    EXPECT_EQ(this->ran, std::vector<std::string>{"still whole"});
}

TYPED_TEST_P(MainQueueConformance, TicksAgainAndAgainFromTheFirstIntervalOn) {
    const double start = this->subject.now();
    double firstTick = -1;
    const auto timer = this->subject.queue().scheduledTimer(0.05, [&] {
        if (this->ran.empty()) firstTick = this->subject.now();
        this->ran.push_back("tick");
    });
    this->subject.pass(0.275);
    timer->invalidate();
    EXPECT_GE(firstTick - start, 0.05 - 0.001);
    EXPECT_GE(this->ran.size(), 3u);
    EXPECT_LE(this->ran.size(), 5u);
}

TYPED_TEST_P(MainQueueConformance, AnInvalidatedTimerTicksNoMore) {
    const auto timer = this->subject.queue().scheduledTimer(0.01, this->noting("tick"));
    this->subject.pass(0.05);
    const auto before = this->ran.size();
    EXPECT_GE(before, 1u);
    timer->invalidate();
    timer->invalidate();
    this->subject.pass(0.05);
    EXPECT_EQ(this->ran.size(), before);
}

TYPED_TEST_P(MainQueueConformance, ATickMayInvalidateItsTimer) {
    std::shared_ptr<Timer> timer;
    const std::string witness = "tick";
    timer = this->subject.queue().scheduledTimer(0.01, [&, witness] {
        timer->invalidate();
        timer = nullptr;
        this->subject.pass(0.03);
        this->ran.push_back(witness);
    });
    this->subject.pass(0.15);
    EXPECT_EQ(this->ran, std::vector<std::string>{"tick"});
}

TYPED_TEST_P(MainQueueConformance, ReleasingAHandleChangesNothing) {
    bool ends = false;
    (void)this->subject.queue().asyncAfter(0.02, this->noting("item"));
    (void)this->subject.queue().scheduledTimer(0.05, [&] { ends = true; });
    this->subject.pass(0.15);
    EXPECT_EQ(this->ran, std::vector<std::string>{"item"});
    EXPECT_TRUE(ends);
}

REGISTER_TYPED_TEST_SUITE_P(MainQueueConformance, RunsLaterInTheOrderGiven, WorkOfWorkComesAfterWhatWaits,
                            TakesWorkFromAnyThreadAndRunsItOnThisOne, GoesOnInsideANestedLoop,
                            DelayedWorkRunsOnceAndNotEarly, DelayedWorkComesInTheOrderOfItsTime,
                            NoDelayStillMeansLater, CancelledWorkDoesNotRun, WorkThatIsDueCanStillBeCancelled,
                            CancellingAfterTheWorkDoesNothing, WorkMayCancelItself,
                            TicksAgainAndAgainFromTheFirstIntervalOn, AnInvalidatedTimerTicksNoMore,
                            ATickMayInvalidateItsTimer, ReleasingAHandleChangesNothing);

} // namespace clipwren
