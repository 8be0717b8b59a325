#pragma once

#include "platform/MainQueue.h"

#include <deque>
#include <memory>
#include <mutex>

class QObject;

namespace clipwren {

// The main queue on Qt's event loop, nested loops such as a modal alert's included.
//
// Made on the main thread after the QCoreApplication and destroyed there before it; work that still waits
// then is dropped without having run. Delays count on the monotonic clock, in whole milliseconds: a delayed
// item never comes early, and a timer's ticks do not drift against its interval.
class QtMainQueue : public MainQueue {
public:
    QtMainQueue();
    ~QtMainQueue() override;

    // Drops what waits without running it, timers included. Main thread only.
    void clear();

    void async(std::function<void()> work) override;
    std::shared_ptr<WorkItem> asyncAfter(double seconds, std::function<void()> work) override;
    std::shared_ptr<Timer> scheduledTimer(double seconds, std::function<void()> tick) override;

private:
    void wake();
    void runNext();

    std::mutex mutex; // guards `waiting`
    std::deque<std::function<void()>> waiting;
    const std::unique_ptr<QObject> receiver; // of the wake-ups; owns the timers
};

} // namespace clipwren
