#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace clipwren {

// Helping threads of one piece of work, which its owner cuts into tasks. The owner works along while it
// waits, so that a crew without any helper does everything too, in the order in which it was given.
//
// All operations are the owner's thread's. Tasks never start or await tasks.
class WorkCrew {
public:
    class Task {
        friend class WorkCrew;
        std::function<void()> work;
        bool done = false;
    };

    // Fewer helpers where the system refuses threads.
    explicit WorkCrew(unsigned helpers);
    // Tasks that were not begun are dropped.
    ~WorkCrew();
    WorkCrew(const WorkCrew&) = delete;
    WorkCrew& operator=(const WorkCrew&) = delete;

    std::shared_ptr<Task> start(std::function<void()> work);
    // Returns when the task is done. What it wrote is then visible to the caller.
    void await(const Task& task);

private:
    void help();
    void runNext(std::unique_lock<std::mutex>& lock);

    std::mutex mutex;
    std::condition_variable wake;
    std::deque<std::shared_ptr<Task>> queue;
    bool ending = false;
    std::vector<std::thread> helpers;
};

} // namespace clipwren
