#pragma once

#include "base/Geometry.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace clipwren {

class X11CaptureLink;

// What has been drawn on the root window and all windows in it, in root pixels.
class X11DamageWatch {
public:
    using Nanoseconds = std::int64_t;

    // None where the server cannot report it. The link outlives the watch.
    static std::unique_ptr<X11DamageWatch> create(X11CaptureLink& link);

    // Returns whether the event is the watch's own. `time` is when it came, or the earliest that may be.
    bool handle(const xcb_generic_event_t& event, Nanoseconds time);

    // When drawing was first noticed since the last `ask`; absent when nothing was drawn.
    std::optional<Nanoseconds> changedAt() const { return noticedAt; }

    // Asks for what was drawn; drawing from now on is noticed anew. Each is followed by `take`, which returns
    // it, none on a failure. The rectangles do not overlap.
    void ask();
    std::optional<std::vector<PixelRect>> take();

private:
    explicit X11DamageWatch(X11CaptureLink& link);

    X11CaptureLink& link;
    std::uint32_t damage = 0;
    std::uint32_t region = 0; // what the server has moved out of the damage
    std::uint8_t notifyEvent = 0;
    unsigned int request = 0;
    std::optional<Nanoseconds> noticedAt;
};

} // namespace clipwren
