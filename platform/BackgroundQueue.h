#pragma once

#include <functional>

namespace clipwren {

// Where long work goes that a user is waiting for.
class BackgroundQueue {
public:
    virtual ~BackgroundQueue() = default;

    // Main thread only. Runs the work on a thread that is not the main thread. The program does not end
    // normally before begun work has finished.
    virtual void async(std::function<void()> work) = 0;
};

} // namespace clipwren
