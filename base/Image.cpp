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

} // namespace

Image::Image(PixelSize size, std::shared_ptr<const BlockTable> blocks)
    : size(size),
      blocks(std::move(blocks)) {}

Image::Image(PixelSize size, std::vector<BlockPointer> blocks)
    : size(size),
      blocks(std::make_shared<const BlockTable>(std::move(blocks))) {}

Image::Image(const PixelView& view, Alpha alpha) : size{view.width, view.height} {
    if (view.width < 1 || view.height < 1) fatalError("an image needs at least one pixel");
    auto table = std::make_shared<BlockTable>();
    table->reserve(index(0, blockRows()));
    for (int row = 0; row < blockRows(); ++row) {
        for (int column = 0; column < blockColumns(); ++column) {
            const PixelRect rect = blockRect(column, row);
            auto block = makeBlock(rect);
            for (int y = 0; y < rect.height; ++y)
                copyRow(view.row(rect.y + y) + rect.x, block->data() + y * blockWidth, rect.width,
                        alphaBits(alpha));
            table->push_back(shared(*table, std::move(block)));
        }
    }
    blocks = std::move(table);
}

// Empty areas are large: a block like the one to the left or above is that one.
Image::BlockPointer Image::shared(const BlockTable& table, BlockPointer block) const {
    const auto columns = static_cast<std::size_t>(blockColumns());
    if (!table.empty() && *table.back() == *block) return table.back();
    if (table.size() >= columns && *table[table.size() - columns] == *block)
        return table[table.size() - columns];
    return block;
}

Image Image::replacing(std::span<const Patch> patches, Alpha alpha) const {
    const Pixel bits = alphaBits(alpha);
    auto table = std::make_shared<BlockTable>(*blocks);
    // The blocks made in this call, by position: they may still be written, those of the old picture may not.
    std::vector<Block*> fresh(blocks->size(), nullptr);
    const auto writable = [&](std::size_t position, const PixelRect& area, bool isWrittenWhole) {
        if (!fresh[position]) {
            auto block = makeBlock(area);
            if (!isWrittenWhole) *block = *(*blocks)[position];
            fresh[position] = block.get();
            (*table)[position] = std::move(block);
        }
        return fresh[position];
    };

    for (const Patch& patch : patches) {
        const PixelRect clipped = patch.rect.intersection(bounds());
        if (clipped.isEmpty()) continue;
        for (int row = clipped.y / blockHeight; row * blockHeight < clipped.maxY(); ++row) {
            for (int column = clipped.x / blockWidth; column * blockWidth < clipped.maxX(); ++column) {
                const PixelRect blockArea = blockRect(column, row);
                const PixelRect part = clipped.intersection(blockArea);
                const std::size_t position = index(column, row);
                const auto source = [&](int y) {
                    return patch.pixels + (y - patch.rect.y) * patch.stride + (part.x - patch.rect.x);
                };
                const auto offset = [&](int y) {
                    return (y - blockArea.y) * blockWidth + (part.x - blockArea.x);
                };
                // Up to the first row that differs nothing is copied: most reported damage changes nothing.
                const Pixel* before = (*table)[position]->data();
                int y = part.y;
                while (y < part.maxY() && !rowsDiffer(source(y), before + offset(y), part.width, bits))
                    ++y;
                if (y == part.maxY()) continue;
                Block* target = writable(position, blockArea, part == blockArea);
                for (y = part.y; y < part.maxY(); ++y)
                    copyRow(source(y), target->data() + offset(y), part.width, bits);
            }
        }
    }
    // A later patch may have undone an earlier one.
    if (patches.size() > 1)
        for (std::size_t position = 0; position < fresh.size(); ++position)
            if (fresh[position] && *fresh[position] == *(*blocks)[position])
                (*table)[position] = (*blocks)[position];
    return {size, std::move(table)};
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
    if (comparable && blocks == other.blocks) return differing;
    for (int row = 0; row < blockRows(); ++row)
        for (int column = 0; column < blockColumns(); ++column)
            if (!comparable || !sharesBlock(other, column, row)) differing.push_back(blockRect(column, row));
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
