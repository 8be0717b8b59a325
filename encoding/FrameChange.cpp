#include "encoding/FrameChange.h"

#include "encoding/Palette.h"

#include <algorithm>

namespace clipwren {

namespace {

void addRun(FrameChange& change, const PixelRun& run, const Pixel* pixels) {
    change.runs.push_back(run);
    change.rect = change.rect.united({run.x, run.y, run.length, 1});
    const std::size_t begin = change.colors.size();
    change.colors.resize(begin + static_cast<std::size_t>(run.length));
    std::transform(pixels, pixels + run.length, change.colors.data() + begin, opaqueColor);
}

bool sameColor(Pixel a, Pixel b) { return opaqueColor(a ^ b) == 0; }

void addChangedRuns(FrameChange& change, const PixelRun& row, const Pixel* before, const Pixel* after) {
    for (int x = 0; x < row.length;) {
        while (x < row.length && sameColor(before[x], after[x]))
            ++x;
        const int begin = x;
        while (x < row.length && !sameColor(before[x], after[x]))
            ++x;
        if (x > begin) addRun(change, {row.x + begin, row.y, x - begin}, after + begin);
    }
}

void addChangesOfBlock(FrameChange& change, const PixelRect& area, const Image& previous,
                       const Image& current) {
    const int column = area.x / Image::blockWidth;
    const int row = area.y / Image::blockHeight;
    const Pixel* before = previous.blockPixels(column, row);
    const Pixel* after = current.blockPixels(column, row);
    for (int y = 0; y < area.height; ++y) {
        const int offset = y * Image::blockWidth;
        addChangedRuns(change, {area.x, area.y + y, area.width}, before + offset, after + offset);
    }
}

void addWholeBlock(FrameChange& change, const Image& image, const PixelRect& block) {
    const Pixel* pixels = image.blockPixels(block.x / Image::blockWidth, block.y / Image::blockHeight);
    for (int y = 0; y < block.height; ++y)
        addRun(change, {block.x, block.y + y, block.width}, pixels + y * Image::blockWidth);
}

} // namespace

void FrameChange::addHealing(const Image& image, const PixelRect& block) {
    addWholeBlock(*this, image, block);
    healingRuns += static_cast<std::size_t>(block.height);
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
    FrameChange change;
    for (const PixelRect& area : current.blocksDiffering(previous))
        addChangesOfBlock(change, area, previous, current);
    return change;
}

FrameChange sampledChangeSince(const Image& previous, const Image& current, std::size_t mostBlocks) {
    const std::vector<PixelRect> areas = current.blocksDiffering(previous);
    const std::size_t step = std::max<std::size_t>(1, (areas.size() + mostBlocks - 1) / mostBlocks);
    FrameChange change;
    for (std::size_t i = 0; i < areas.size(); i += step)
        addChangesOfBlock(change, areas[i], previous, current);
    return change;
}

} // namespace clipwren
