#pragma once

#include "encoding/ByteSink.h"

#include <cstddef>
#include <limits>
#include <vector>

namespace clipwren {

// Keeps the bytes; fails like a full disk once there are more than `capacity`.
class MemorySink : public ByteSink {
public:
    std::vector<std::uint8_t> bytes;
    std::size_t capacity = std::numeric_limits<std::size_t>::max();

    void write(std::span<const std::uint8_t> more) override {
        if (!intact) return;
        if (more.size() > capacity - bytes.size()) {
            intact = false;
            return;
        }
        bytes.insert(bytes.end(), more.begin(), more.end());
    }
    bool good() const override { return intact; }

private:
    bool intact = true;
};

} // namespace clipwren
