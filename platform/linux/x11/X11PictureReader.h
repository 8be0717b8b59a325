#pragma once

#include "base/Geometry.h"
#include "base/Image.h"

#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace clipwren {

class X11CaptureLink;

// Reads parts of the root window: through memory shared with the server where it is on this machine and
// knows how, otherwise through the connection.
class X11PictureReader {
public:
    // Gets the pixels of one rectangle, whose alpha is undefined; valid during the call. The stride counts
    // pixels.
    using Sink = std::function<void(const PixelRect& rect, const Pixel* pixels, std::ptrdiff_t stride)>;

    // `capacity` is the number of pixels that the largest rectangle has. The link outlives the reader.
    X11PictureReader(X11CaptureLink& link, std::int64_t capacity);
    ~X11PictureReader();
    X11PictureReader(const X11PictureReader&) = delete;
    X11PictureReader& operator=(const X11PictureReader&) = delete;

    // Hands the rectangles' pixels to the sink, in their order. False when the server refused a part, the
    // connection is lost or the wait was ended; the rest is then left out.
    bool read(std::span<const PixelRect> rects, const Sink& sink);

    // Whether rectangles can be asked for ahead, and read in a way that leaves them where the server has
    // written them.
    bool isShared() const { return pixels != nullptr; }

    // Where isShared(): asks for rectangles, which together have no more pixels than the largest one. Each is
    // followed by `take`, which is as `read`.
    void ask(std::span<const PixelRect> rects);
    bool take(const Sink& sink);

    // Where isShared(): asks for a rectangle. Each is followed by `takeStaying`, which returns its pixels in
    // plain rows without a gap, null on a failure. They are the caller's to write to, and stay until the next
    // ones have been returned.
    void askStaying(const PixelRect& rect);
    Pixel* takeStaying();

    // Lets go of the memory that holds nothing which must stay.
    void rest();

private:
    bool share();
    std::int64_t segmentSize() const { return 3 * capacity; } // in pixels: two that stay, and one part
    unsigned int request(const PixelRect& rect, std::int64_t offset);
    bool readPlain(const PixelRect& rect, const Sink& sink);

    X11CaptureLink& link;
    std::int64_t capacity;
    std::uint32_t segment = 0;
    Pixel* pixels = nullptr; // shared; null without shared memory
    std::vector<PixelRect> askedRects;
    std::vector<unsigned int> requests; // of the rectangles asked for
    unsigned int stayingRequest = 0;
    std::int64_t stayingSize = 0;
    int stayingPart = 0; // of the segment, 0 or 1: where the pixels are that were returned last
};

} // namespace clipwren
