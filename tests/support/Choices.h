#pragma once

#include "base/Image.h"

#include <cstdint>
#include <span>

namespace clipwren {

// Decisions from the bytes as long as there are any, then zeros.
class Choices {
public:
    explicit Choices(std::span<const std::uint8_t> bytes) : bytes(bytes) {}

    unsigned byte() {
        if (bytes.empty()) return 0;
        const unsigned result = bytes.front();
        bytes = bytes.subspan(1);
        return result;
    }
    // 0 to limit - 1.
    int below(int limit) { return static_cast<int>((byte() << 8 | byte()) % static_cast<unsigned>(limit)); }
    bool isExhausted() const { return bytes.empty(); }
    Pixel color() { return 0xFF000000 | byte() << 16 | byte() << 8 | byte(); }

private:
    std::span<const std::uint8_t> bytes;
};

} // namespace clipwren
