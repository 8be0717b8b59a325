#pragma once

#include "base/FatalError.h"

#include <cstdint>
#include <limits>

namespace clipwren {

// Sums and products of counts that must never wrap around: an overflow is a fatal error.

inline std::int64_t checkedAdd(std::int64_t a, std::int64_t b) {
    using Limits = std::numeric_limits<std::int64_t>;
    if ((b > 0 && a > Limits::max() - b) || (b < 0 && a < Limits::min() - b))
        fatalError("arithmetic overflow in an addition");
    return a + b;
}

// For factors that are not negative.
inline std::int64_t checkedMultiply(std::int64_t a, std::int64_t b) {
    if (a < 0 || b < 0) fatalError("negative factor in a product of counts");
    if (b != 0 && a > std::numeric_limits<std::int64_t>::max() / b)
        fatalError("arithmetic overflow in a multiplication");
    return a * b;
}

} // namespace clipwren
