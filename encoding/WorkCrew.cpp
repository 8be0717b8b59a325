#include "encoding/WorkCrew.h"

#include <system_error>
#include <utility>

namespace clipwren {

WorkCrew::WorkCrew(unsigned count) {
    try {
        for (unsigned i = 0; i < count; ++i)
            helpers.emplace_back([this] { help(); });
    } catch (const std::system_error&) {
        // The owner does what missing helpers would have done.
    }
}

WorkCrew::~WorkCrew() {
    {
        const std::lock_guard lock(mutex);
        ending = true;
        queue.clear();
    }
    wake.notify_all();
    for (std::thread& helper : helpers)
        helper.join();
}

std::shared_ptr<WorkCrew::Task> WorkCrew::start(std::function<void()> work) {
    auto task = std::make_shared<Task>();
    task->work = std::move(work);
    {
        const std::lock_guard lock(mutex);
        queue.push_back(task);
    }
    wake.notify_one();
    return task;
}

void WorkCrew::await(const Task& task) {
    std::unique_lock lock(mutex);
    while (!task.done) {
        if (queue.empty())
            wake.wait(lock);
        else
            runNext(lock);
    }
}

void WorkCrew::help() {
    std::unique_lock lock(mutex);
    for (;;) {
        wake.wait(lock, [this] { return ending || !queue.empty(); });
        if (ending) return;
        runNext(lock);
    }
}

void WorkCrew::runNext(std::unique_lock<std::mutex>& lock) {
    const std::shared_ptr<Task> task = std::move(queue.front());
    queue.pop_front();
    lock.unlock();
    task->work();
    task->work = nullptr;
    lock.lock();
    task->done = true;
    // The owner may be waiting for this task among helpers that wait for work.
    wake.notify_all();
}

} // namespace clipwren
