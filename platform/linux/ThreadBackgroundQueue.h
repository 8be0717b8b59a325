#pragma once

#include "base/SerialQueue.h"
#include "platform/BackgroundQueue.h"

#include <utility>

namespace clipwren {

// The background queue on one thread of its own, one item after the other. Destruction finishes what was
// given, then joins the thread.
class ThreadBackgroundQueue : public BackgroundQueue {
public:
    void async(std::function<void()> work) override { queue.async(std::move(work)); }

    // Returns when everything that was given has been done.
    void finish() {
        queue.sync([] {});
    }

private:
    SerialQueue queue{"background"};
};

} // namespace clipwren
