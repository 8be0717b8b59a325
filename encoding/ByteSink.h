#pragma once

#include <cstdint>
#include <span>

namespace clipwren {

// Where a file's bytes go, in order. Used by one thread at a time.
class ByteSink {
public:
    virtual ~ByteSink() = default;

    // Takes all bytes or fails. After a failure everything is ignored.
    virtual void write(std::span<const std::uint8_t> bytes) = 0;
    // Whether nothing has failed so far.
    virtual bool good() const = 0;
};

} // namespace clipwren
