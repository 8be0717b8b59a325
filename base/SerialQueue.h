#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace clipwren {

// A thread of its own that runs work items one at a time, in the order in which they were given.
//
// `async` and `sync` may be called from any thread but, for `sync`, the queue's own. Destruction runs what
// was still queued, then joins the thread; it must not happen on the queue's own thread, so work items never
// own the queue's owner.
class SerialQueue {
public:
    explicit SerialQueue(std::string label);
    ~SerialQueue();
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    const std::string& label() const { return name; }

    // Queues the item and returns.
    void async(std::function<void()> work);

    // Runs the item on the queue after everything queued before it, and returns when it is done.
    void sync(const std::function<void()>& work);

    // Items that are queued and not yet begun.
    std::size_t pending() const;

private:
    void run();

    const std::string name;
    mutable std::mutex mutex;
    std::condition_variable wake;
    std::deque<std::function<void()>> items;
    bool ending = false;
    std::thread thread;
};

} // namespace clipwren
