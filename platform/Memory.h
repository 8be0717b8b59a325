#pragma once

#include <cstdint>
#include <optional>

namespace clipwren {

// The memory of the computer. Any thread.
class Memory {
public:
    virtual ~Memory() = default;

    // How many bytes more this program may take before something would fail or be ended: the least that any
    // limit leaves, be it the process's own, that of a group it belongs to, or the machine's. Absent where
    // nothing is known. Asking costs less than a millisecond.
    virtual std::optional<std::int64_t> available() const = 0;
};

} // namespace clipwren
