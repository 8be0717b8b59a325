#pragma once

#include "base/Geometry.h"
#include "base/MediaTime.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace clipwren {

class Memory;

// How much memory must be left when a recording of this size stops, so that its GIF can be made.
std::int64_t memoryReserve(PixelSize frame);

// Watches the memory while a recording grows. One thread at a time.
class MemoryWatch {
public:
    // `onShort` is called once, by `kept`, when less than the reserve is left.
    MemoryWatch(const Memory& memory, std::function<void()> onShort);

    // A frame has been kept, which took about so many bytes. Looks at the memory after every few megabytes
    // and every few seconds of the recording.
    void kept(PixelSize frame, std::int64_t bytes, const MediaTime& time);

    // Memory could not be had.
    void ranOut();

private:
    const Memory& memory;
    std::function<void()> onShort; // none once it was called
    std::int64_t unlookedBytes = 0;
    std::optional<double> lookedAt; // seconds of the recording
};

} // namespace clipwren
