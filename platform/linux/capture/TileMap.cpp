#include "platform/linux/capture/TileMap.h"

#include "base/Image.h"

#include <algorithm>
#include <cstddef>

namespace clipwren {

TileMap::TileMap(PixelSize picture)
    : picture(picture),
      columns((picture.width + Image::blockWidth - 1) / Image::blockWidth),
      rows((picture.height + Image::blockHeight - 1) / Image::blockHeight),
      marks(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows), 0) {}

void TileMap::mark(const PixelRect& rect) {
    const PixelRect inside = rect.intersection({0, 0, picture.width, picture.height});
    if (inside.isEmpty()) return;
    const int firstColumn = inside.x / Image::blockWidth;
    const int lastColumn = (inside.maxX() - 1) / Image::blockWidth;
    const int lastRow = (inside.maxY() - 1) / Image::blockHeight;
    for (int row = inside.y / Image::blockHeight; row <= lastRow; ++row) {
        const auto begin = marks.begin() + std::ptrdiff_t{row} * columns;
        for (auto tile = begin + firstColumn; tile <= begin + lastColumn; ++tile) {
            markedCount += *tile == 0;
            *tile = 1;
        }
    }
}

void TileMap::markAll() { mark({0, 0, picture.width, picture.height}); }

void TileMap::clear() {
    if (isEmpty()) return;
    std::fill(marks.begin(), marks.end(), std::uint8_t{0});
    markedCount = 0;
}

std::vector<PixelRect> TileMap::rects() const {
    std::vector<PixelRect> result;
    if (isEmpty()) return result;
    // By the column in which it begins, the rectangle that reaches furthest down.
    constexpr std::size_t none = static_cast<std::size_t>(-1);
    std::vector<std::size_t> lowest(static_cast<std::size_t>(columns), none);
    for (int row = 0; row < rows; ++row) {
        const auto line = marks.begin() + std::ptrdiff_t{row} * columns;
        for (int column = 0; column < columns; ++column) {
            if (!line[column]) continue;
            std::size_t& above = lowest[static_cast<std::size_t>(column)];
            const int left = column * Image::blockWidth;
            const int top = row * Image::blockHeight;
            while (column < columns && line[column])
                ++column;
            const PixelRect run{left, top, std::min(column * Image::blockWidth, picture.width) - left,
                                std::min(Image::blockHeight, picture.height - top)};
            // A run of the same width straight below makes a rectangle taller.
            if (above != none && result[above].width == run.width && result[above].maxY() == run.y) {
                result[above].height += run.height;
            } else {
                above = result.size();
                result.push_back(run);
            }
        }
    }
    return result;
}

std::vector<PixelRect> joined(std::vector<PixelRect> rects, std::int64_t overhead) {
    // Trying each pair is fine for what a desktop draws; a picture that falls into more is read as one.
    constexpr std::size_t mostRects = 64;
    if (rects.size() > mostRects) {
        PixelRect all;
        for (const PixelRect& rect : rects)
            all = all.united(rect);
        return {all};
    }
    for (std::size_t i = 0; i < rects.size(); ++i) {
        for (std::size_t j = i + 1; j < rects.size(); ++j) {
            const PixelRect both = rects[i].united(rects[j]);
            if (both.area() > rects[i].area() + rects[j].area() + overhead) continue;
            rects[i] = both;
            rects.erase(rects.begin() + static_cast<std::ptrdiff_t>(j));
            // The larger one may now be worth joining with those that were looked at before. Each restart
            // has one rectangle fewer, so it ends.
            i = static_cast<std::size_t>(-1);
            break;
        }
    }
    return rects;
}

} // namespace clipwren
