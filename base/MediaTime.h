#pragma once

#include <cstdint>

namespace clipwren {

// A rational time: value / timescale seconds. Differences are exact, so that frame times never drift.
// A time whose timescale is not positive is invalid; it, and every difference with it, reads as NaN seconds.
struct MediaTime {
    std::int64_t value = 0;
    std::int32_t timescale = 0;

    static constexpr MediaTime zero() { return {0, 1}; }
    static constexpr MediaTime nanoseconds(std::int64_t count) { return {count, 1'000'000'000}; }

    constexpr bool isValid() const { return timescale > 0; }

    // NaN for an invalid time.
    double seconds() const;

    // Exact where the least common timescale fits 32 bits and the value 64; otherwise rounded to nanoseconds.
    friend MediaTime operator-(const MediaTime& a, const MediaTime& b);

    // Memberwise: 1/2 and 2/4 are the same time but not the same representation.
    friend bool operator==(const MediaTime&, const MediaTime&) = default;
};

} // namespace clipwren
