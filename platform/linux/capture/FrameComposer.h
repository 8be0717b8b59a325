#pragma once

#include "base/Geometry.h"
#include "base/Image.h"
#include "platform/linux/capture/AreaScaler.h"
#include "platform/linux/capture/CursorImage.h"
#include "platform/linux/capture/TileMap.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace clipwren {

// Makes a stream's frames from the parts of the screen that are read: keeps the recorded region as it is on
// the screen, without the pointer, and turns what changed in it into the next frame, pointer and scaling
// included. Each frame equals what drawing and scaling the whole region at once would give.
//
// Positions are pixels of the region as it is on the screen. One thread at a time.
class FrameComposer {
public:
    // The region is black at first. Both sizes are at least 1 x 1.
    FrameComposer(PixelSize region, PixelSize frame);

    // New pixels of the screen for a rectangle inside the region; `pixels` points at its top left, the stride
    // counts pixels. Alpha is taken as opaque, whatever stands there, here and in `adopt`.
    void update(const PixelRect& rect, const Pixel* pixels, std::ptrdiff_t stride);

    // New pixels for the whole region, in plain rows without a gap. Instead of copying them, the composer
    // goes on with this memory as its own until it adopts another or ends, and writes into it. The memory
    // adopted before must stay as it is until this returns.
    void adopt(Pixel* pixels);

    // Makes the whole region black.
    void clear();

    // Where the pointer is and what it looks like; no picture: it is not shown. It may lie outside.
    void setCursor(std::shared_ptr<const CursorImage> picture, int x, int y);

    // The next frame, which shares all it can with the one before; none when it would be equal to that. The
    // first call always gives a frame.
    std::optional<Image> compose();

    // Lets go of the last frame, for when nothing is going to change soon. It is made anew when something
    // does: then the next frame shares nothing with those before. Does nothing while a frame is due.
    void rest();

private:
    void wake();
    bool showsAlready(const PixelRect& rect, const Pixel* pixels, std::ptrdiff_t stride);
    Image wholeFrame();
    void drawCursor();
    void removeCursor();
    Image nextFrame();
    void markDifferences(const Pixel* pixels);
    PixelRect cursorRect() const;
    Pixel* at(int x, int y) { return region + std::ptrdiff_t{y} * size.width + x; }
    PixelView view() const { return {region, size.width, size.height, size.width}; }
    std::size_t pixelCount() const { return static_cast<std::size_t>(size.width) * size.height; }

    PixelSize size;
    PixelSize frameSize;
    std::vector<Pixel> ownRegion; // while no memory is adopted
    Pixel* region = nullptr;      // the alpha of its pixels is undefined
    TileMap changed;
    std::vector<Pixel> differences; // of one row of tiles, while it is gone through
    std::shared_ptr<const CursorImage> cursor;
    int cursorX = 0;
    int cursorY = 0;
    std::vector<Pixel> underCursor;   // while the cursor is drawn into the region
    std::optional<AreaScaler> scaler; // none where a frame's pixels are the screen's
    std::optional<Image> previous;    // none at first and while resting
    bool isResting = false;
};

} // namespace clipwren
