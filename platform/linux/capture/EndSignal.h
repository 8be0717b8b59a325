#pragma once

#include <atomic>

namespace clipwren {

// How a thread that sleeps in poll() is told to end. Any thread may ask; one thread waits.
class EndSignal {
public:
    enum class Request { none, finish, abandon };

    EndSignal();
    ~EndSignal();
    EndSignal(const EndSignal&) = delete;
    EndSignal& operator=(const EndSignal&) = delete;

    // False where the system had no descriptor left: then nobody must wait.
    bool isValid() const { return event >= 0; }

    // Wakes the waiting thread. What was asked for is never weakened.
    void request(Request what);

    Request requested() const { return current.load(); }

    // Readable after a request that `acknowledge` has not yet taken note of.
    int descriptor() const { return event; }
    void acknowledge();

private:
    int event;
    std::atomic<Request> current = Request::none;
};

} // namespace clipwren
