#include "capture/MemoryWatch.h"

#include "platform/Memory.h"

#include <utility>

namespace clipwren {

namespace {

constexpr std::int64_t megabyte = std::int64_t{1} << 20;
constexpr std::int64_t bytesBetweenLooks = 4 * megabyte;
constexpr double secondsBetweenLooks = 2;

} // namespace

// Measured: the encoder takes the memory of eight to eighteen plain frames, and the start of its threads and
// the toolkit's alert some megabytes more.
std::int64_t memoryReserve(PixelSize frame) {
    return 128 * megabyte + 24 * std::int64_t{frame.width} * frame.height * 4;
}

MemoryWatch::MemoryWatch(const Memory& memory, std::function<void()> onShort)
    : memory(memory),
      onShort(std::move(onShort)) {}

void MemoryWatch::kept(PixelSize frame, std::int64_t bytes, const MediaTime& time) {
    unlookedBytes += bytes;
    const double now = time.seconds();
    if (lookedAt && unlookedBytes < bytesBetweenLooks && now - *lookedAt < secondsBetweenLooks) return;
    unlookedBytes = 0;
    lookedAt = now;
    const auto available = memory.available();
    if (available && *available < memoryReserve(frame)) ranOut();
}

void MemoryWatch::ranOut() {
    if (const auto report = std::exchange(onShort, nullptr)) report();
}

} // namespace clipwren
