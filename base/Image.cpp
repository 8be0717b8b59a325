#include "base/Image.h"

#include "base/BlockPool.h"
#include "base/FatalError.h"

#include <algorithm>
#include <utility>

namespace clipwren {

namespace {

// Laid over every pixel, so that an undefined alpha becomes an opaque one.
Pixel alphaBits(Image::Alpha alpha) { return alpha == Image::Alpha::undefined ? 0xFF000000 : 0; }

// Both without a branch in the loop, for the sake of vector code.
void copyRow(const Pixel* from, Pixel* to, int count, Pixel bits) {
    for (int i = 0; i < count; ++i)
        to[i] = from[i] | bits;
}

bool rowsDiffer(const Pixel* from, const Pixel* to, int count, Pixel bits) {
    Pixel difference = 0;
    for (int i = 0; i < count; ++i)
        difference |= (from[i] | bits) ^ to[i];
    return difference != 0;
}

// Gives a painted row its alpha; something else than zero when it differs from what was there before.
Pixel takeRow(Pixel* row, const Pixel* before, int count, Pixel bits) {
    Pixel difference = 0;
    for (int i = 0; i < count; ++i) {
        row[i] |= bits;
        difference |= row[i] ^ before[i];
    }
    return difference;
}

} // namespace

// The rows of blocks of a new picture: those of the old one, but for the blocks that are written.
class Image::Successor {
public:
    explicit Successor(const Image& before)
        : before(before),
          rows(*before.rows),
          fresh(rows.size(), nullptr) {}

    const BlockPointer& at(int column, int row) const {
        return (*rows[static_cast<std::size_t>(row)])[static_cast<std::size_t>(column)];
    }
    void set(int column, int row, BlockPointer block) {
        const auto index = static_cast<std::size_t>(row);
        if (!fresh[index]) {
            auto copy = std::make_shared<BlockRow>(*rows[index]);
            fresh[index] = copy.get();
            rows[index] = std::move(copy);
        }
        (*fresh[index])[static_cast<std::size_t>(column)] = std::move(block);
    }
    Image take() { return {before.size, std::move(rows)}; }

private:
    const Image& before;
    std::vector<RowPointer> rows;
    std::vector<BlockRow*> fresh; // the rows made here: they may still be written
};

Image::Image(PixelSize size, std::vector<RowPointer> rows)
    : size(size),
      rows(std::make_shared<const std::vector<RowPointer>>(std::move(rows))) {}

Image::Image(const PixelView& view, Alpha alpha) : size{view.width, view.height} {
    if (view.width < 1 || view.height < 1) fatalError("an image needs at least one pixel");
    std::vector<RowPointer> table;
    for (int row = 0; row < blockRows(); ++row) {
        BlockRow blocks;
        blocks.reserve(static_cast<std::size_t>(blockColumns()));
        for (int column = 0; column < blockColumns(); ++column) {
            const PixelRect rect = blockRect(column, row);
            auto block = makeBlock(rect);
            for (int y = 0; y < rect.height; ++y)
                copyRow(view.row(rect.y + y) + rect.x, block->data() + y * blockWidth, rect.width,
                        alphaBits(alpha));
            // Empty areas are large: a block like the one to the left or above is that one.
            if (!blocks.empty() && *blocks.back() == *block)
                blocks.push_back(blocks.back());
            else if (row > 0 && *(*table.back())[blocks.size()] == *block)
                blocks.push_back((*table.back())[blocks.size()]);
            else
                blocks.push_back(std::move(block));
        }
        table.push_back(std::make_shared<const BlockRow>(std::move(blocks)));
    }
    rows = std::make_shared<const std::vector<RowPointer>>(std::move(table));
}

Image Image::replacing(std::span<const Patch> patches, Alpha alpha) const {
    const Pixel bits = alphaBits(alpha);
    Successor next(*this);
    // The blocks made in this call: they may still be written, those of the old picture may not.
    struct Fresh {
        int column;
        int row;
        Block* block;
    };
    std::vector<Fresh> fresh;
    const auto writable = [&](int column, int row, const PixelRect& area, bool isWrittenWhole) {
        const BlockPointer& now = next.at(column, row);
        if (now != block(column, row)) return const_cast<Block*>(now.get());
        auto made = makeBlock(area);
        if (!isWrittenWhole) *made = *now;
        fresh.push_back({column, row, made.get()});
        next.set(column, row, std::move(made));
        return fresh.back().block;
    };

    for (const Patch& patch : patches) {
        const PixelRect clipped = patch.rect.intersection(bounds());
        if (clipped.isEmpty()) continue;
        for (int row = clipped.y / blockHeight; row * blockHeight < clipped.maxY(); ++row) {
            for (int column = clipped.x / blockWidth; column * blockWidth < clipped.maxX(); ++column) {
                const PixelRect blockArea = blockRect(column, row);
                const PixelRect part = clipped.intersection(blockArea);
                const auto source = [&](int y) {
                    return patch.pixels + (y - patch.rect.y) * patch.stride + (part.x - patch.rect.x);
                };
                const auto offset = [&](int y) {
                    return (y - blockArea.y) * blockWidth + (part.x - blockArea.x);
                };
                // Up to the first row that differs nothing is copied: most reported damage changes nothing.
                const Pixel* before = next.at(column, row)->data();
                int y = part.y;
                while (y < part.maxY() && !rowsDiffer(source(y), before + offset(y), part.width, bits))
                    ++y;
                if (y == part.maxY()) continue;
                Block* target = writable(column, row, blockArea, part == blockArea);
                for (y = part.y; y < part.maxY(); ++y)
                    copyRow(source(y), target->data() + offset(y), part.width, bits);
            }
        }
    }
    // A later patch may have undone an earlier one.
    if (patches.size() > 1)
        for (const Fresh& each : fresh)
            if (*each.block == *block(each.column, each.row))
                next.set(each.column, each.row, block(each.column, each.row));
    return next.take();
}

Image Image::repainting(std::span<const PixelRect> rects, const Painter& paint, Alpha alpha) const {
    const Pixel bits = alphaBits(alpha);
    const auto columns = static_cast<std::size_t>(blockColumns());
    std::vector<std::uint8_t> isTouched(columns * static_cast<std::size_t>(blockRows()), 0);
    for (const PixelRect& rect : rects) {
        const PixelRect clipped = rect.intersection(bounds());
        for (int row = clipped.y / blockHeight; row * blockHeight < clipped.maxY(); ++row)
            for (int column = clipped.x / blockWidth; column * blockWidth < clipped.maxX(); ++column)
                isTouched[static_cast<std::size_t>(row) * columns + static_cast<std::size_t>(column)] = 1;
    }
    Successor next(*this);
    std::shared_ptr<Block> painted; // used again when its pixels turn out to be the old ones
    for (std::size_t position = 0; position < isTouched.size(); ++position) {
        if (!isTouched[position]) continue;
        const int row = static_cast<int>(position / columns), column = static_cast<int>(position % columns);
        const PixelRect part = blockRect(column, row);
        if (!painted) painted = makeBlock();
        if (part.width < blockWidth || part.height < blockHeight) painted->fill(0);
        paint(part, painted->data());
        const Pixel* before = blockPixels(column, row);
        Pixel difference = 0;
        for (int y = 0; y < part.height; ++y)
            difference |=
                takeRow(painted->data() + y * blockWidth, before + y * blockWidth, part.width, bits);
        if (difference != 0) next.set(column, row, std::exchange(painted, nullptr));
    }
    return next.take();
}

std::shared_ptr<Image::Block> Image::makeBlock() {
    return std::allocate_shared_for_overwrite<Block>(BlockAllocator<Block>());
}

std::shared_ptr<Image::Block> Image::makeBlock(const PixelRect& area) {
    auto block = makeBlock();
    if (area.width < blockWidth || area.height < blockHeight) block->fill(0);
    return block;
}

PixelRect Image::blockRect(int column, int row) const {
    const PixelRect whole{column * blockWidth, row * blockHeight, blockWidth, blockHeight};
    return whole.intersection(bounds());
}

std::vector<PixelRect> Image::blocksDiffering(const Image& other) const {
    const bool comparable = size == other.size;
    std::vector<PixelRect> differing;
    if (comparable && rows == other.rows) return differing;
    for (int row = 0; row < blockRows(); ++row) {
        const auto index = static_cast<std::size_t>(row);
        if (comparable && (*rows)[index] == (*other.rows)[index]) continue;
        for (int column = 0; column < blockColumns(); ++column)
            if (!comparable || !sharesBlock(other, column, row)) differing.push_back(blockRect(column, row));
    }
    return differing;
}

void Image::copy(const PixelRect& rect, Pixel* destination, std::ptrdiff_t stride) const {
    for (int row = rect.y / blockHeight; row * blockHeight < rect.maxY(); ++row) {
        for (int column = rect.x / blockWidth; column * blockWidth < rect.maxX(); ++column) {
            const PixelRect blockArea = blockRect(column, row);
            const PixelRect part = rect.intersection(blockArea);
            const Pixel* source = blockPixels(column, row) - blockArea.x;
            for (int y = part.y; y < part.maxY(); ++y)
                std::copy_n(source + (y - blockArea.y) * blockWidth + part.x, part.width,
                            destination + (y - rect.y) * stride + (part.x - rect.x));
        }
    }
}

Pixel Image::pixel(int x, int y) const {
    const Pixel* pixels = blockPixels(x / blockWidth, y / blockHeight);
    return pixels[(y % blockHeight) * blockWidth + x % blockWidth];
}

} // namespace clipwren
