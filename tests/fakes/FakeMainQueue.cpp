#include "tests/fakes/FakeMainQueue.h"

#include "base/FatalError.h"

#include <algorithm>
#include <utility>

namespace clipwren {

struct FakeMainQueue::Entry : WorkItem, Timer {
    double due = 0;
    double interval = 0; // 0 for a single run
    std::function<void()> work;
    bool live = true;

    void cancel() override { live = false; }
    void invalidate() override { live = false; }
};

void FakeMainQueue::async(std::function<void()> work) {
    const std::lock_guard lock(mutex);
    queue.push_back(std::move(work));
}

std::shared_ptr<FakeMainQueue::Entry> FakeMainQueue::schedule(double seconds, double interval,
                                                              std::function<void()> work) {
    auto entry = std::make_shared<Entry>();
    entry->due = clock + seconds;
    entry->interval = interval;
    entry->work = std::move(work);
    entries.push_back(entry);
    return entry;
}

std::shared_ptr<WorkItem> FakeMainQueue::asyncAfter(double seconds, std::function<void()> work) {
    return schedule(seconds, 0, std::move(work));
}

std::shared_ptr<Timer> FakeMainQueue::scheduledTimer(double seconds, std::function<void()> tick) {
    return schedule(seconds, seconds, std::move(tick));
}

void FakeMainQueue::run() {
    for (int count = 0; count < 100'000; ++count) {
        std::function<void()> work;
        {
            const std::lock_guard lock(mutex);
            if (queue.empty()) return;
            work = std::move(queue.front());
            queue.pop_front();
        }
        work();
    }
    fatalError("the main queue never became empty");
}

void FakeMainQueue::advance(double seconds) {
    const double end = clock + seconds;
    run();
    for (;;) {
        std::erase_if(entries, [](const auto& entry) { return !entry->live; });
        const auto next = std::min_element(entries.begin(), entries.end(),
                                           [](const auto& a, const auto& b) { return a->due < b->due; });
        if (next == entries.end() || (*next)->due > end) break;
        const auto entry = *next;
        clock = entry->due;
        if (entry->interval > 0)
            entry->due += entry->interval;
        else
            entry->live = false;
        entry->work();
        run();
    }
    clock = end;
}

void FakeMainQueue::clear() {
    // What is dropped may queue more while it goes; it goes outside the lock.
    for (int round = 0; round < 100; ++round) {
        std::deque<std::function<void()>> dropped;
        {
            const std::lock_guard lock(mutex);
            dropped.swap(queue);
        }
        const auto droppedEntries = std::exchange(entries, {});
        if (dropped.empty() && droppedEntries.empty()) return;
    }
}

std::size_t FakeMainQueue::scheduledCount() const {
    return static_cast<std::size_t>(
        std::count_if(entries.begin(), entries.end(), [](const auto& entry) { return entry->live; }));
}

} // namespace clipwren
