#include "base/MediaTime.h"

#include <cmath>
#include <limits>
#include <numeric>
#include <optional>

namespace clipwren {

namespace {

std::optional<std::int64_t> scaled(std::int64_t value, std::int64_t factor) {
    constexpr auto limit = std::numeric_limits<std::int64_t>::max();
    if (value > limit / factor || value < -(limit / factor)) return std::nullopt;
    return value * factor;
}

std::optional<std::int64_t> difference(std::int64_t a, std::int64_t b) {
    using Limits = std::numeric_limits<std::int64_t>;
    if ((b < 0 && a > Limits::max() + b) || (b > 0 && a < Limits::min() + b)) return std::nullopt;
    return a - b;
}

} // namespace

double MediaTime::seconds() const {
    if (!isValid()) return std::numeric_limits<double>::quiet_NaN();
    return static_cast<double>(value) / timescale;
}

MediaTime operator-(const MediaTime& a, const MediaTime& b) {
    if (!a.isValid() || !b.isValid()) return {};
    const std::int64_t common = std::lcm(std::int64_t{a.timescale}, std::int64_t{b.timescale});
    if (common <= std::numeric_limits<std::int32_t>::max()) {
        const auto first = scaled(a.value, common / a.timescale);
        const auto second = scaled(b.value, common / b.timescale);
        if (first && second)
            if (const auto exact = difference(*first, *second))
                return {*exact, static_cast<std::int32_t>(common)};
    }
    const double nanoseconds = (a.seconds() - b.seconds()) * 1e9;
    // The next double below 2^63: beyond it the difference is no time that a recording can have.
    if (!(std::fabs(nanoseconds) < 9.2233720368547748e18)) return {};
    return MediaTime::nanoseconds(std::llround(nanoseconds));
}

} // namespace clipwren
