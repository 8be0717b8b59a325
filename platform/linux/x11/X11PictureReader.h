#pragma once

#include "base/Geometry.h"
#include "base/Image.h"

#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

namespace clipwren {

class X11CaptureLink;

// Reads parts of the root window: through memory shared with the server where it is on this machine and
// knows how, otherwise through the connection.
class X11PictureReader {
public:
    // Gets the pixels of one rectangle, whose alpha is undefined; valid during the call. The stride counts
    // pixels.
    using Sink = std::function<void(const PixelRect& rect, const Pixel* pixels, std::ptrdiff_t stride)>;

    // `capacity` is the number of pixels that the largest read has. The link outlives the reader.
    X11PictureReader(X11CaptureLink& link, std::int64_t capacity);
    ~X11PictureReader();
    X11PictureReader(const X11PictureReader&) = delete;
    X11PictureReader& operator=(const X11PictureReader&) = delete;

    // Hands the rectangles' pixels to the sink, in their order. False when the server refused a part, the
    // connection is lost or the wait was ended; the rest is then left out.
    bool read(std::span<const PixelRect> rects, const Sink& sink);

    bool usesSharedMemory() const { return pixels != nullptr; }

private:
    bool share();
    bool readShared(std::span<const PixelRect> rects, const Sink& sink);
    bool readPlain(const PixelRect& rect, const Sink& sink);

    X11CaptureLink& link;
    std::int64_t capacity;
    std::uint32_t segment = 0;
    Pixel* pixels = nullptr; // shared; null without shared memory
};

} // namespace clipwren
