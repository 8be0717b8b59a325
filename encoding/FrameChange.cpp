#include "encoding/FrameChange.h"

#include "encoding/Palette.h"
#include "encoding/WideVectors.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>

namespace clipwren {

namespace {

// A bit for each pixel of a block's row.
using RowMask = std::uint64_t;
static_assert(Image::blockWidth == 64);

void addRun(FrameChange& change, const PixelRun& run, const Pixel* pixels) {
    change.runs.push_back(run);
    const std::size_t begin = change.colors.size();
    change.colors.resize(begin + static_cast<std::size_t>(run.length));
    std::transform(pixels, pixels + run.length, change.colors.data() + begin, opaqueColor);
}

CLIPWREN_WIDE_VECTORS
RowMask differingPixels(const Pixel* before, const Pixel* after) {
    RowMask mask = 0;
    for (int part = 0; part < Image::blockWidth; part += 32) {
        std::uint32_t bits = 0;
        for (int x = 0; x < 32; ++x)
            bits |= (opaqueColor(before[part + x] ^ after[part + x]) != 0 ? 1u : 0u) << x;
        mask |= RowMask{bits} << part;
    }
    return mask;
}

// The pixels of a block's row that changed.
struct ChangedRow {
    int x = 0; // of the block
    int y = 0;
    RowMask differing = 0;
    const Pixel* pixels = nullptr; // of all the row
};

// What lies beyond the picture's edges is equal.
void findChangedRows(std::vector<ChangedRow>& rows, const PixelRect& area, const Image& previous,
                     const Image& current) {
    const int column = area.x / Image::blockWidth;
    const int row = area.y / Image::blockHeight;
    const Pixel* before = previous.blockPixels(column, row);
    const Pixel* after = current.blockPixels(column, row);
    for (int y = 0; y < area.height; ++y, before += Image::blockWidth, after += Image::blockWidth)
        if (const RowMask differing = differingPixels(before, after))
            rows.push_back({area.x, area.y + y, differing, after});
}

void addRuns(FrameChange& change, const ChangedRow& row) {
    const int left = std::countr_zero(row.differing);
    const int right = Image::blockWidth - std::countl_zero(row.differing);
    change.rect = change.rect.united({row.x + left, row.y, right - left, 1});
    for (RowMask rest = row.differing; rest != 0;) {
        const int begin = std::countr_zero(rest);
        const int length = std::countr_one(rest >> begin);
        addRun(change, {row.x + begin, row.y, length}, row.pixels + begin);
        // Carries through the run; at the end of the row it is lost.
        rest &= rest + (RowMask{1} << begin);
    }
}

// With no more memory than it takes: several changes are worked on at a time.
FrameChange changeOf(const std::vector<ChangedRow>& rows) {
    std::size_t runs = 0;
    std::size_t pixels = 0;
    for (const ChangedRow& row : rows) {
        runs += static_cast<std::size_t>(std::popcount(row.differing & ~(row.differing << 1)));
        pixels += static_cast<std::size_t>(std::popcount(row.differing));
    }
    FrameChange change;
    change.runs.reserve(runs);
    change.colors.reserve(pixels);
    for (const ChangedRow& row : rows)
        addRuns(change, row);
    return change;
}

void addWholeBlock(FrameChange& change, const Image& image, const PixelRect& block) {
    const Pixel* pixels = image.blockPixels(block.x / Image::blockWidth, block.y / Image::blockHeight);
    for (int y = 0; y < block.height; ++y)
        addRun(change, {block.x, block.y + y, block.width}, pixels + y * Image::blockWidth);
    change.rect = change.rect.united(block);
}

} // namespace

void FrameChange::addHealing(const Image& image, std::span<const PixelRect> blocks) {
    std::size_t pixels = colors.size();
    for (const PixelRect& block : blocks)
        pixels += static_cast<std::size_t>(block.area());
    colors.reserve(pixels);
    for (const PixelRect& block : blocks) {
        addWholeBlock(*this, image, block);
        healingRuns += static_cast<std::size_t>(block.height);
    }
}

FrameChange wholeFrame(const Image& image) {
    FrameChange change;
    change.colors.reserve(static_cast<std::size_t>(image.bounds().area()));
    for (int row = 0; row < image.blockRows(); ++row)
        for (int column = 0; column < image.blockColumns(); ++column)
            addWholeBlock(change, image, image.blockRect(column, row));
    return change;
}

FrameChange changeSince(const Image& previous, const Image& current) {
    return sampledChangeSince(previous, current, std::numeric_limits<std::size_t>::max());
}

FrameChange sampledChangeSince(const Image& previous, const Image& current, std::size_t mostBlocks) {
    const std::vector<PixelRect> areas = current.blocksDiffering(previous);
    const std::size_t step = areas.size() / mostBlocks + (areas.size() % mostBlocks > 0 ? 1 : 0);
    std::vector<ChangedRow> rows;
    for (std::size_t i = 0; i < areas.size(); i += step)
        findChangedRows(rows, areas[i], previous, current);
    return changeOf(rows);
}

} // namespace clipwren
