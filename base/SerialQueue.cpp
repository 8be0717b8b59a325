#include "base/SerialQueue.h"

#include "base/FatalError.h"

#include <utility>

namespace clipwren {

SerialQueue::SerialQueue(std::string label) : name(std::move(label)), thread([this] { run(); }) {}

SerialQueue::~SerialQueue() {
    {
        const std::lock_guard lock(mutex);
        ending = true;
    }
    wake.notify_one();
    if (thread.get_id() == std::this_thread::get_id())
        fatalError("a serial queue was destroyed on its own thread");
    thread.join();
}

void SerialQueue::async(std::function<void()> work) {
    {
        const std::lock_guard lock(mutex);
        items.push_back(std::move(work));
    }
    wake.notify_one();
}

void SerialQueue::sync(const std::function<void()>& work) {
    if (thread.get_id() == std::this_thread::get_id()) fatalError("a serial queue waited for itself");
    std::mutex doneMutex;
    std::condition_variable doneSignal;
    bool done = false;
    async([&] {
        work();
        // Notified under the lock: the waiter owns the condition and destroys it as soon as it sees `done`.
        const std::lock_guard lock(doneMutex);
        done = true;
        doneSignal.notify_one();
    });
    std::unique_lock lock(doneMutex);
    doneSignal.wait(lock, [&] { return done; });
}

std::size_t SerialQueue::pending() const {
    const std::lock_guard lock(mutex);
    return items.size();
}

void SerialQueue::run() {
    std::unique_lock lock(mutex);
    for (;;) {
        wake.wait(lock, [this] { return ending || !items.empty(); });
        if (items.empty()) return;
        auto work = std::move(items.front());
        items.pop_front();
        lock.unlock();
        work();
        work = nullptr; // What the item held is released before the next one, and outside the lock.
        lock.lock();
    }
}

} // namespace clipwren
