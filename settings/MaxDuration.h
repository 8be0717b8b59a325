#pragma once

#include "base/FatalError.h"
#include "settings/RawRepresentable.h"

#include <array>
#include <string>

namespace clipwren {

// Seconds after which a recording stops by itself; 0 never stops it, and is offered last.
enum class MaxDuration : std::int64_t { seconds15 = 15, seconds30 = 30, seconds60 = 60, noLimit = 0 };

template <>
inline constexpr std::array allCases<MaxDuration>{MaxDuration::seconds15, MaxDuration::seconds30,
                                                  MaxDuration::seconds60, MaxDuration::noLimit};

inline std::string label(MaxDuration duration) {
    switch (duration) {
    case MaxDuration::seconds15: return "15 seconds";
    case MaxDuration::seconds30: return "30 seconds";
    case MaxDuration::seconds60: return "60 seconds";
    case MaxDuration::noLimit: return "No limit";
    }
    fatalError("unknown duration");
}

} // namespace clipwren
