#pragma once

#include "base/Geometry.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace clipwren {

// One pixel as a native 32-bit word 0xAARRGGBB, colour premultiplied by alpha: on a little-endian machine the
// bytes B, G, R, A of the pixel format 'BGRA'.
using Pixel = std::uint32_t;

// A borrowed picture in plain rows: row y begins at pixels + y * stride. The stride counts pixels.
struct PixelView {
    const Pixel* pixels = nullptr;
    int width = 0;
    int height = 0;
    std::ptrdiff_t stride = 0;

    const Pixel* row(int y) const { return pixels + y * stride; }
};

// An immutable picture made of shared blocks.
//
// Two pictures of which one was made from the other by `replacing` or `repainting` share every block that did
// not change, and every row of blocks without such a change. So a recording costs memory and time for what
// changed, and asking whether a block changed is a pointer comparison. An Image is a handle: copying it
// copies no pixels. Thread-safe as every immutable value is.
class Image {
public:
    static constexpr int blockWidth = 64;
    static constexpr int blockHeight = 16;

    // Rows of blockWidth pixels. What lies beyond the picture's edges is zero.
    using Block = std::array<Pixel, std::size_t{blockWidth} * blockHeight>;
    using BlockPointer = std::shared_ptr<const Block>;
    using BlockRow = std::vector<BlockPointer>;
    using RowPointer = std::shared_ptr<const BlockRow>;

    // New pixels for one rectangle: `pixels` points at the pixel of the rectangle's top left corner.
    struct Patch {
        PixelRect rect;
        const Pixel* pixels = nullptr;
        std::ptrdiff_t stride = 0; // in pixels
    };

    // Whether the alpha of given pixels counts, or is undefined and stands for opaque ones.
    enum class Alpha { kept, undefined };

    // Copies the view, whose width and height are at least 1.
    explicit Image(const PixelView& view, Alpha alpha = Alpha::kept);

    // Takes the rows of a whole grid of blocks from the top.
    Image(PixelSize size, std::vector<RowPointer> rows);

    // The same picture with the patches laid over it, in their order; each is clipped to the picture. A block
    // whose pixels come out as they were is shared all the same.
    Image replacing(std::span<const Patch> patches, Alpha alpha = Alpha::kept) const;

    // The same picture with every block painted anew that any of the rectangles touches, each once and whole.
    // `paint` fills the part of the picture that it is told of, in rows of blockWidth pixels. A block whose
    // pixels come out as they were is shared all the same.
    using Painter = std::function<void(const PixelRect& part, Pixel* pixels)>;
    Image repainting(std::span<const PixelRect> rects, const Painter& paint, Alpha alpha = Alpha::kept) const;

    int width() const { return size.width; }
    int height() const { return size.height; }
    PixelRect bounds() const { return {0, 0, size.width, size.height}; }

    // The nominal row size in bytes, four a pixel: what the byte count of a recording adds up, whatever is
    // shared.
    std::int64_t bytesPerRow() const { return std::int64_t{size.width} * 4; }

    // The grid of blocks, row by row from the top left; the last column and row may be cut off by the edges.
    int blockColumns() const { return (size.width + blockWidth - 1) / blockWidth; }
    int blockRows() const { return (size.height + blockHeight - 1) / blockHeight; }
    PixelRect blockRect(int column, int row) const;

    // The grid's blocks themselves, for other ways to keep a picture. Rows that are the same hold the same.
    std::span<const RowPointer> allRows() const { return *rows; }

    // A block to be filled: its pixels are undefined.
    static std::shared_ptr<Block> makeBlock();

    // The pixels of one block: row y of it begins at the returned pointer + y * blockWidth, also in the last
    // column. Valid as long as any picture that shares the block.
    const Pixel* blockPixels(int column, int row) const { return block(column, row)->data(); }

    // Whether both pictures hold the very same block there: then its pixels are equal. Different blocks may
    // be equal too. Both pictures have the same size.
    bool sharesBlock(const Image& other, int column, int row) const {
        return block(column, row) == other.block(column, row);
    }

    // The rectangles of the blocks that the two do not share, row by row. Pictures of different size share
    // none.
    std::vector<PixelRect> blocksDiffering(const Image& other) const;

    // Copies the part `rect`, which lies inside the picture, into plain rows. The stride counts pixels.
    void copy(const PixelRect& rect, Pixel* destination, std::ptrdiff_t stride) const;

    Pixel pixel(int x, int y) const;

private:
    // With zeros beyond the picture's edges.
    static std::shared_ptr<Block> makeBlock(const PixelRect& area);

    class Successor; // a picture that is made from another one

    const BlockPointer& block(int column, int row) const {
        return (*(*rows)[static_cast<std::size_t>(row)])[static_cast<std::size_t>(column)];
    }

    PixelSize size;
    std::shared_ptr<const std::vector<RowPointer>> rows;
};

} // namespace clipwren
