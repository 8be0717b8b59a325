#pragma once

#include <algorithm>
#include <cstdint>

namespace clipwren {

// Decides when a change on the screen may become a frame. Times are nanoseconds of one clock that does not
// jump. No clock is read here.
//
// Frames have an ideal time, the *slot*, one interval after the one before it. A frame may come up to half an
// interval before its slot, but the slots themselves never move closer together. So a source that draws at
// the recorded rate, with a jitter of up to a quarter of an interval to either side, gets each of its frames
// taken once and without delay; a faster source is taken at even distances and at exactly the recorded rate;
// and after a rest the first change is taken at once.
class FramePacer {
public:
    using Nanoseconds = std::int64_t;

    // A change rarely comes alone: what is drawn together is taken together after this time.
    static constexpr Nanoseconds settleTime = 2'000'000;

    explicit FramePacer(Nanoseconds interval) : interval(std::max<Nanoseconds>(interval, 1)) {}

    // Before this no change is looked at.
    Nanoseconds earliest() const { return std::max(slot - interval / 2, lastLook + interval / 2); }

    // When to look at a change that was first noticed at `changedAt`.
    Nanoseconds dueForChange(Nanoseconds changedAt) const {
        return std::max(earliest(), changedAt + settleTime);
    }

    // When to look for what the display server does not report by itself, the pointer's place. Later than for
    // a change, so that such looks do not take the slot of a frame that is about to be drawn.
    Nanoseconds dueForPointer() const { return std::max(slot, lastLook + interval); }

    // A look at `time` found nothing to show. The next look waits for half an interval, whatever is reported.
    void looked(Nanoseconds time) { lastLook = time; }

    // A frame was taken at `time`.
    void took(Nanoseconds time) {
        lastLook = time;
        slot = std::max(slot, time) + interval;
    }

private:
    Nanoseconds interval;
    // Far enough in the past for the first look, without an overflow in the sums above.
    Nanoseconds slot = INT64_MIN / 2;
    Nanoseconds lastLook = INT64_MIN / 2;
};

} // namespace clipwren
