#include "platform/linux/capture/EndSignal.h"

#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>

namespace clipwren {

EndSignal::EndSignal() : event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

EndSignal::~EndSignal() {
    if (isValid()) close(event);
}

void EndSignal::request(Request what) {
    Request before = current.load();
    while (before < what && !current.compare_exchange_weak(before, what)) {
    }
    // Fails only when a wake-up is already waiting to be seen, which is as good.
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(event, &one, sizeof one);
}

void EndSignal::acknowledge() {
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t taken = read(event, &count, sizeof count);
}

} // namespace clipwren
