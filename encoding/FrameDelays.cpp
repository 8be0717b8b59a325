#include "encoding/FrameDelays.h"

#include <algorithm>
#include <cmath>

namespace clipwren {

namespace {

constexpr double defaultDelay = 1.0 / 15;
// Viewers slow down what is shorter.
constexpr double shortestDelay = 0.02;
constexpr double longestDelay = 24 * 60 * 60;
constexpr std::int64_t shortestHundredths = 2;

} // namespace

double frameDelay(const MediaTime& time, const std::optional<MediaTime>& next) {
    double delay = next ? (*next - time).seconds() : defaultDelay;
    if (!std::isfinite(delay) || delay <= 0) delay = defaultDelay;
    return std::max(delay, shortestDelay);
}

double pulsePhase(const MediaTime& time) {
    const double seconds = time.seconds();
    return std::isfinite(seconds) ? seconds - std::trunc(seconds) : 0;
}

std::int64_t DelayRounder::hundredths(double delay) {
    total += std::min(delay, longestDelay);
    // The total is a sum of doubles: its last bit may cost a delay of exactly 0.02 a hundredth.
    const std::int64_t result =
        std::max<std::int64_t>(std::llround(total * 100) - written, shortestHundredths);
    written += result;
    return result;
}

} // namespace clipwren
