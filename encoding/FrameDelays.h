#pragma once

#include "base/MediaTime.h"

#include <cstdint>
#include <optional>

namespace clipwren {

// How long a frame is to be shown, in seconds: until the next frame, or a fifteenth of a second for the last
// one (no `next`) and where the times do not grow. At least 0.02, and always finite.
double frameDelay(const MediaTime& time, const std::optional<MediaTime>& next);

// Where in its pulse, which lasts a second, the badge of a frame is: the fractional part of the frame's time,
// with its sign; 0 for a time that is not finite.
double pulsePhase(const MediaTime& time);

// Turns delays in seconds into whole hundredths of a second from their running total, so that no frame starts
// more than 5 ms from its time, however many came before. A delay over a day counts as a day.
class DelayRounder {
public:
    // Of the next frame: at least 2 hundredths for a delay of at least 0.02.
    std::int64_t hundredths(double delay);

private:
    double total = 0;         // of the delays, in seconds
    std::int64_t written = 0; // of the results
};

} // namespace clipwren
