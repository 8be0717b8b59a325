#include "platform/linux/capture/FrameComposer.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <utility>

namespace clipwren {

namespace {

constexpr Pixel opaque = 0xFF000000;

// Returns something else than zero when the colour of any pixel came out different. One pass without a
// branch, for the sake of vector code.
Pixel copyAndCompare(const Pixel* from, Pixel* to, int count) {
    Pixel difference = 0;
    for (int i = 0; i < count; ++i) {
        difference |= from[i] ^ to[i];
        to[i] = from[i];
    }
    return difference & ~opaque;
}

} // namespace

FrameComposer::FrameComposer(PixelSize region, PixelSize frame)
    : size(region),
      frameSize(frame),
      changed(region) {
    clear();
    if (region != frame) scaler.emplace(region, frame);
}

void FrameComposer::update(const PixelRect& rect, const Pixel* pixels, std::ptrdiff_t stride) {
    if (isResting && !showsAlready(rect, pixels, stride)) wake();
    // Tile by tile it is noted what differs, since much of what is redrawn comes out as it was; but the
    // memory is gone through row by row, in which the processor can see a pattern.
    const int firstColumn = rect.x / Image::blockWidth;
    const int endColumn = (rect.maxX() + Image::blockWidth - 1) / Image::blockWidth;
    differences.resize(static_cast<std::size_t>(endColumn));
    for (int top = rect.y; top < rect.maxY();) {
        const int bottom = std::min(rect.maxY(), (top / Image::blockHeight + 1) * Image::blockHeight);
        std::fill(differences.begin(), differences.end(), Pixel{0});
        for (int y = top; y < bottom; ++y) {
            const Pixel* row = pixels + (y - rect.y) * stride - rect.x;
            for (int column = firstColumn; column < endColumn; ++column) {
                const int left = std::max(column * Image::blockWidth, rect.x);
                const int right = std::min((column + 1) * Image::blockWidth, rect.maxX());
                differences[static_cast<std::size_t>(column)] |=
                    copyAndCompare(row + left, at(left, y), right - left);
            }
        }
        for (int column = firstColumn; column < endColumn; ++column)
            if (differences[static_cast<std::size_t>(column)] != 0)
                changed.mark({column * Image::blockWidth, top, Image::blockWidth, 1});
        top = bottom;
    }
}

void FrameComposer::adopt(Pixel* pixels) {
    if (isResting && !showsAlready({0, 0, size.width, size.height}, pixels, size.width)) wake();
    // Comparing here must save more than it costs: the frame's blocks are compared anyway.
    if (scaler && !scaler->isQuick())
        markDifferences(pixels);
    else if (!isResting)
        changed.markAll();
    region = pixels;
    ownRegion = {};
}

// Row by row, as in `update`; but what moves is seen to differ at once and not looked at again.
void FrameComposer::markDifferences(const Pixel* pixels) {
    const int columns = (size.width + Image::blockWidth - 1) / Image::blockWidth;
    std::vector<int> equal; // the columns without a difference so far
    for (int top = 0; top < size.height; top += Image::blockHeight) {
        equal.resize(static_cast<std::size_t>(columns));
        std::iota(equal.begin(), equal.end(), 0);
        const int bottom = std::min(size.height, top + Image::blockHeight);
        for (int y = top; y < bottom && !equal.empty(); ++y)
            std::erase_if(equal, [&](int column) {
                const int left = column * Image::blockWidth;
                const int width = std::min(Image::blockWidth, size.width - left);
                const std::ptrdiff_t offset = std::ptrdiff_t{y} * size.width + left;
                const bool differs = std::memcmp(pixels + offset, region + offset,
                                                 static_cast<std::size_t>(width) * sizeof(Pixel)) != 0;
                if (differs) changed.mark({left, top, width, 1});
                return differs;
            });
    }
}

void FrameComposer::clear() {
    wake();
    if (!region) {
        ownRegion.resize(pixelCount());
        region = ownRegion.data();
    }
    std::fill_n(region, pixelCount(), opaque);
    changed.markAll();
}

PixelRect FrameComposer::cursorRect() const {
    if (!cursor) return {};
    return cursor->rect(cursorX, cursorY).intersection({0, 0, size.width, size.height});
}

void FrameComposer::setCursor(std::shared_ptr<const CursorImage> picture, int x, int y) {
    if (picture == cursor && (!picture || (x == cursorX && y == cursorY))) return;
    const PixelRect from = cursorRect();
    const PixelRect to =
        picture ? picture->rect(x, y).intersection({0, 0, size.width, size.height}) : PixelRect();
    if (!from.isEmpty() || !to.isEmpty()) wake();
    changed.mark(from);
    changed.mark(to);
    cursor = std::move(picture);
    cursorX = x;
    cursorY = y;
}

std::optional<Image> FrameComposer::compose() {
    if (isResting || (previous && changed.isEmpty())) return std::nullopt;
    Image next = previous ? nextFrame() : wholeFrame();
    changed.clear();

    // What changed may not show: under the pointer, or in the rounding of the scaler.
    const bool isNew = !previous || !next.blocksDiffering(*previous).empty();
    if (isNew) previous = next;
    return isNew ? std::optional(std::move(next)) : std::nullopt;
}

void FrameComposer::rest() {
    if (!previous || !changed.isEmpty()) return;
    previous.reset();
    isResting = true;
}

// To be called before what the frame shows changes.
void FrameComposer::wake() {
    if (!isResting) return;
    previous = wholeFrame();
    isResting = false;
}

// Whether these are the region's pixels; a different alpha may count as another pixel.
bool FrameComposer::showsAlready(const PixelRect& rect, const Pixel* pixels, std::ptrdiff_t stride) {
    for (int y = 0; y < rect.height; ++y)
        if (std::memcmp(pixels + y * stride, at(rect.x, rect.y + y),
                        static_cast<std::size_t>(rect.width) * sizeof(Pixel)) != 0)
            return false;
    return true;
}

Image FrameComposer::wholeFrame() {
    drawCursor();
    std::vector<Pixel> scaled;
    PixelView whole = view();
    if (scaler) {
        scaled.resize(static_cast<std::size_t>(frameSize.width) * static_cast<std::size_t>(frameSize.height));
        scaler->scale(whole, {0, 0, frameSize.width, frameSize.height}, scaled.data(), frameSize.width);
        whole = {scaled.data(), frameSize.width, frameSize.height, frameSize.width};
    }
    Image frame(whole, Image::Alpha::undefined);
    removeCursor();
    return frame;
}

Image FrameComposer::nextFrame() {
    drawCursor();
    std::vector<Image::Patch> patches;
    std::vector<PixelRect> affected;
    for (const PixelRect& rect : changed.rects()) {
        if (scaler)
            affected.push_back(scaler->affected(rect));
        else
            patches.push_back({rect, at(rect.x, rect.y), size.width});
    }
    // Straight into the frame's blocks.
    const auto paint = [this](const PixelRect& part, Pixel* pixels) {
        scaler->scale(view(), part, pixels, Image::blockWidth);
    };
    Image frame = scaler ? previous->repainting(affected, paint, Image::Alpha::undefined)
                         : previous->replacing(patches, Image::Alpha::undefined);
    removeCursor();
    return frame;
}

// Drawn into the region for as long as a frame is made, so that copying and scaling need to know of one
// picture only.
void FrameComposer::drawCursor() {
    const PixelRect rect = cursorRect();
    underCursor.clear();
    if (rect.isEmpty()) return;
    const PixelRect whole = cursor->rect(cursorX, cursorY);
    for (int y = rect.y; y < rect.maxY(); ++y) {
        Pixel* below = at(rect.x, y);
        underCursor.insert(underCursor.end(), below, below + rect.width);
        const Pixel* above =
            cursor->pixels.data() + std::ptrdiff_t{y - whole.y} * cursor->width + (rect.x - whole.x);
        for (int i = 0; i < rect.width; ++i)
            below[i] = blended(above[i], below[i]);
    }
}

void FrameComposer::removeCursor() {
    const PixelRect rect = cursorRect();
    if (rect.isEmpty()) return;
    for (int y = rect.y; y < rect.maxY(); ++y)
        std::copy_n(underCursor.data() + std::ptrdiff_t{y - rect.y} * rect.width, rect.width, at(rect.x, y));
}

} // namespace clipwren
