#include "platform/linux/qt/QtMainQueue.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace clipwren {

namespace {

// What a QTimer can hold; more than three weeks is never asked for in earnest.
int milliseconds(double exact) {
    constexpr double longest = std::numeric_limits<int>::max();
    return exact > 0 ? static_cast<int>(std::min(exact, longest)) : 0;
}

// The work lives in a shared block, so that a call under way keeps it when the timer is ended meanwhile, even
// from a nested event loop.
QTimer* startTimer(QObject& owner, int interval, bool repeats, std::function<void()> work) {
    auto* timer = new QTimer(&owner);
    timer->setTimerType(Qt::PreciseTimer);
    timer->setSingleShot(!repeats);
    QObject::connect(timer, &QTimer::timeout, timer,
                     [timer, repeats, work = std::make_shared<std::function<void()>>(std::move(work))] {
                         if (!repeats) timer->deleteLater();
                         (*std::shared_ptr(work))();
                     });
    timer->start(interval);
    return timer;
}

class Handle final : public WorkItem, public Timer {
public:
    explicit Handle(QTimer* timer) : timer(timer) {}

    void cancel() override { end(); }
    void invalidate() override { end(); }

private:
    void end() {
        if (!timer) return;
        timer->stop();
        timer->deleteLater();
        timer.clear();
    }

    QPointer<QTimer> timer;
};

} // namespace

QtMainQueue::QtMainQueue() : receiver(std::make_unique<QObject>()) {}

QtMainQueue::~QtMainQueue() = default;

void QtMainQueue::clear() {
    // What is dropped may queue more while it goes, and it goes outside the lock.
    for (int round = 0; round < 100; ++round) {
        qDeleteAll(receiver->findChildren<QTimer*>());
        std::deque<std::function<void()>> dropped;
        {
            const std::lock_guard lock(mutex);
            dropped.swap(waiting);
        }
        if (dropped.empty()) return;
    }
}

void QtMainQueue::async(std::function<void()> work) {
    const std::lock_guard lock(mutex);
    waiting.push_back(std::move(work));
    if (waiting.size() == 1) wake();
}

void QtMainQueue::wake() {
    QMetaObject::invokeMethod(receiver.get(), [this] { runNext(); }, Qt::QueuedConnection);
}

// One item an event, and the next event posted before the item runs: a nested loop that the item starts does
// not see events that were posted before it until something else wakes it.
void QtMainQueue::runNext() {
    std::function<void()> work;
    {
        const std::lock_guard lock(mutex);
        if (waiting.empty()) return; // cleared after the wake-up was posted
        work = std::move(waiting.front());
        waiting.pop_front();
        if (!waiting.empty()) wake();
    }
    work();
}

std::shared_ptr<WorkItem> QtMainQueue::asyncAfter(double seconds, std::function<void()> work) {
    return std::make_shared<Handle>(
        startTimer(*receiver, milliseconds(std::ceil(seconds * 1000)), false, std::move(work)));
}

std::shared_ptr<Timer> QtMainQueue::scheduledTimer(double seconds, std::function<void()> tick) {
    const int interval = std::max(1, milliseconds(std::round(seconds * 1000)));
    return std::make_shared<Handle>(startTimer(*receiver, interval, true, std::move(tick)));
}

} // namespace clipwren
