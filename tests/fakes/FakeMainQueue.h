#pragma once

#include "platform/MainQueue.h"

#include <deque>
#include <mutex>
#include <vector>

namespace clipwren {

// A main queue whose thread is the test's and whose clock moves only when the test moves it.
class FakeMainQueue : public MainQueue {
public:
    void async(std::function<void()> work) override;
    std::shared_ptr<WorkItem> asyncAfter(double seconds, std::function<void()> work) override;
    std::shared_ptr<Timer> scheduledTimer(double seconds, std::function<void()> tick) override;

    // Runs what is queued, and what that queues, until nothing is left. Bounded: a queue that feeds itself
    // for ever is a fatal error.
    void run();

    // Moves the clock, running everything due in the order of its time, and what it queues, on the way.
    void advance(double seconds);

    // Drops everything that waits without running it, as the end of the program does.
    void clear();

    double now() const { return clock; }
    // Delayed items and timers that have neither run out nor been cancelled.
    std::size_t scheduledCount() const;

private:
    struct Entry;
    std::shared_ptr<Entry> schedule(double seconds, double interval, std::function<void()> work);

    std::mutex mutex;
    std::deque<std::function<void()>> queue;
    std::vector<std::shared_ptr<Entry>> entries; // in the order of scheduling
    double clock = 0;
};

} // namespace clipwren
