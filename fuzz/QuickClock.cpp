// Linked into a fuzzer, time flies: the clock that does not jump runs fifty times as fast, and waits end so
// much earlier. What waits for a quiet screen is tried that much more often.

#include <csignal>
#include <ctime>

#include <dlfcn.h>
#include <poll.h>

namespace {

constexpr long long speed = 50;
constexpr long long second = 1'000'000'000;

timespec timesSpeed(const timespec& time, long long factor, long long divisor) {
    const long long nanoseconds = (time.tv_sec * second + time.tv_nsec) / divisor * factor;
    return {.tv_sec = static_cast<time_t>(nanoseconds / second),
            .tv_nsec = static_cast<long>(nanoseconds % second)};
}

} // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
    using Function = int (*)(clockid_t, timespec*);
    static const auto function = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "clock_gettime"));
    const int result = function(clock, time);
    if (clock == CLOCK_MONOTONIC && result == 0) *time = timesSpeed(*time, speed, 1);
    return result;
}

extern "C" int ppoll(pollfd* descriptors, nfds_t count, const timespec* limit, const sigset_t* mask) {
    using Function = int (*)(pollfd*, nfds_t, const timespec*, const sigset_t*);
    static const auto function = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "ppoll"));
    const timespec shorter = limit ? timesSpeed(*limit, 1, speed) : timespec{};
    return function(descriptors, count, limit ? &shorter : nullptr, mask);
}
