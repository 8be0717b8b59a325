#pragma once

#include <functional>
#include <memory>

namespace clipwren {

// A delayed work item that has been scheduled. Releasing the handle does not cancel the work.
class WorkItem {
public:
    virtual ~WorkItem() = default;
    // Main thread only. After it the work does not run; once the work has run it does nothing.
    virtual void cancel() = 0;
};

// A repeating timer. Releasing the handle does not stop it: the queue keeps it going.
class Timer {
public:
    virtual ~Timer() = default;
    // Main thread only. After it no tick runs; a second call does nothing.
    virtual void invalidate() = 0;
};

// The queue of the main thread, on which the whole user interface and the recording's state machine run.
class MainQueue {
public:
    virtual ~MainQueue() = default;

    // Any thread. Runs the work on the main thread, later, never inside this call; items run in the order
    // given.
    virtual void async(std::function<void()> work) = 0;

    // Main thread only. Runs the work once, on the main thread, when `seconds` have passed on a clock that
    // does not jump.
    virtual std::shared_ptr<WorkItem> asyncAfter(double seconds, std::function<void()> work) = 0;

    // Main thread only. Runs `tick` on the main thread every `seconds`, the first time after one interval.
    virtual std::shared_ptr<Timer> scheduledTimer(double seconds, std::function<void()> tick) = 0;
};

} // namespace clipwren
