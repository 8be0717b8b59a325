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

} // namespace

FrameChange wholeFrame(const Image& image) {
    FrameChange change;
    change.colors.reserve(static_cast<std::size_t>(image.bounds().area()));
    for (int row = 0; row < image.blockRows(); ++row)
        for (int column = 0; column < image.blockColumns(); ++column) {
            const PixelRect area = image.blockRect(column, row);
            const Pixel* pixels = image.blockPixels(column, row);
            for (int y = 0; y < area.height; ++y)
                addRun(change, {area.x, area.y + y, area.width}, pixels + y * Image::blockWidth);
        }
    return change;
}

FrameChange changeSince(const Image& previous, const Image& current) {
    FrameChange change;
    for (const PixelRect& area : current.blocksDiffering(previous)) {
        const int column = area.x / Image::blockWidth;
        const int row = area.y / Image::blockHeight;
        const Pixel* before = previous.blockPixels(column, row);
        const Pixel* after = current.blockPixels(column, row);
        for (int y = 0; y < area.height; ++y) {
            const int offset = y * Image::blockWidth;
            addChangedRuns(change, {area.x, area.y + y, area.width}, before + offset, after + offset);
        }
    }
    return change;
}

} // namespace clipwren
