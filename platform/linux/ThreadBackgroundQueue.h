#pragma once

#include "base/SerialQueue.h"
#include "platform/BackgroundQueue.h"

#include <utility>

#include <malloc.h>

namespace clipwren {

// The background queue on one thread of its own, one item after the other. Destruction finishes what was
// given, then joins the thread.
class ThreadBackgroundQueue : public BackgroundQueue {
public:
    void async(std::function<void()> work) override {
        queue.async([work = std::move(work)]() mutable {
            std::exchange(work, nullptr)();
            // What a recording took and freed on many threads would stay with the process otherwise: the
            // allocator keeps it for each of them.
            malloc_trim(0);
        });
    }

    // Returns when everything that was given has been done.
    void finish() {
        queue.sync([] {});
    }

private:
    SerialQueue queue{"background"};
};

} // namespace clipwren
