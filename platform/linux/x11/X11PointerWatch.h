#pragma once

#include "platform/linux/capture/CursorImage.h"
#include "platform/linux/capture/FramePacer.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>

namespace clipwren {

class X11CaptureLink;

// Where the pointer is and what it looks like.
//
// The server reports a new shape by itself, and, where it has XInput 2, that the pointer begins to move. From
// then on its place is asked for once a frame, and no longer listened to: a mouse may report a thousand times
// a second. When it rests, listening begins again. Because a program may set the pointer without any motion
// of a device, a resting one is asked for too, `restInterval` apart and whenever something was drawn.
class X11PointerWatch {
public:
    using Nanoseconds = std::int64_t;

    static constexpr Nanoseconds restInterval = 500'000'000;
    // How long a pointer must stay to be taken as resting.
    static constexpr Nanoseconds restAfter = 100'000'000;

    // XFixes' version has been asked for. The link outlives the watch.
    explicit X11PointerWatch(X11CaptureLink& link);

    // Returns whether the event is the watch's own.
    bool handle(const xcb_generic_event_t& event);

    // When to look again.
    Nanoseconds dueAt(const FramePacer& pacer) const;

    // Asks for place and, if it is new, shape. Each is followed by `take`; false on a failure.
    void ask();
    bool take(Nanoseconds now);

    // The shape; none without a pointer on this screen. The place in root pixels.
    const std::shared_ptr<const CursorImage>& shape() const { return visibleShape; }
    int x() const { return placeX; }
    int y() const { return placeY; }

private:
    void listen(bool toMotion);
    std::shared_ptr<const CursorImage> takeShape();

    X11CaptureLink& link;
    std::uint8_t shapeEvent = 0;
    std::uint8_t inputOpcode = 0; // 0 without XInput 2
    bool shapeIsNew = true;
    bool asksForShape = false;
    bool follows = true;
    Nanoseconds lastMoved = 0;
    Nanoseconds lastLook = 0;
    unsigned int placeRequest = 0;
    unsigned int shapeRequest = 0;
    std::shared_ptr<const CursorImage> knownShape;
    std::shared_ptr<const CursorImage> visibleShape;
    int placeX = 0;
    int placeY = 0;
};

} // namespace clipwren
