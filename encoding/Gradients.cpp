#include "encoding/Gradients.h"

#include "encoding/Palette.h"
#include "encoding/WideVectors.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace clipwren {

namespace {

// Neighbours in a gradient differ by no more, in red, green and blue each.
constexpr int steepestStep = 4;
// So far away, in pixels, a gradient has changed.
constexpr int reach = 8;

// Of each of red, green and blue, how far neighbours are from each other at most: larger ones replace what is
// there.
CLIPWREN_WIDE_VECTORS
void takeLarger(const Pixel* some, const Pixel* others, int count, Pixel* __restrict differences) {
    const auto* a = reinterpret_cast<const std::uint8_t*>(some);
    const auto* b = reinterpret_cast<const std::uint8_t*>(others);
    auto* largest = reinterpret_cast<std::uint8_t*>(differences);
    for (int i = 0; i < count * static_cast<int>(sizeof(Pixel)); ++i) {
        const auto difference = static_cast<std::uint8_t>(std::max(a[i], b[i]) - std::min(a[i], b[i]));
        largest[i] = std::max(largest[i], difference);
    }
}

bool isSteep(Pixel a, Pixel b) {
    const auto differs = [&](int shift) {
        return std::abs(static_cast<int>(a >> shift & 0xFF) - static_cast<int>(b >> shift & 0xFF)) >
               steepestStep;
    };
    return differs(0) || differs(8) || differs(16);
}

// Whether any of red, green and blue is larger than the limit, which is below 128.
constexpr bool exceeds(Pixel components, Pixel limit) {
    constexpr Pixel ones = 0x010101;
    return (((components & 127 * ones) + (127 - limit) * ones) | components) & 128 * ones;
}

} // namespace

// Which pixels of a row of the block belong to a gradient, as far as the block tells.
CLIPWREN_WIDE_VECTORS
void Gradients::find(const Pixel* block, PixelSize size, int y, RowFlags& result) {
    using Row = std::array<Pixel, Image::blockWidth>;
    const auto rowAt = [block](int at) { return block + at * Image::blockWidth; };
    const Pixel* const row = rowAt(y);
    Row step{};
    takeLarger(row, row + 1, size.width - 1, step.data());
    takeLarger(row + 1, row, size.width - 1, step.data() + 1);
    if (y > 0) takeLarger(row, rowAt(y - 1), size.width, step.data());
    if (y + 1 < size.height) takeLarger(row, rowAt(y + 1), size.width, step.data());

    // From the first of two pixels so far away that is in the block.
    Row across{};
    const int withRight = std::max(size.width - reach, 0);
    const int withLeft = std::max(withRight, reach);
    takeLarger(row, row + reach, withRight, across.data());
    takeLarger(row + withLeft, row + withLeft - reach, size.width - withLeft, across.data() + withLeft);
    Row down{};
    if (y + reach < size.height)
        takeLarger(row, rowAt(y + reach), size.width, down.data());
    else if (y >= reach)
        takeLarger(row, rowAt(y - reach), size.width, down.data());

    constexpr Pixel steepest = steepestStep * reach;
    for (std::size_t x = 0; x < result.size(); ++x) {
        const bool isSmooth = !exceeds(step[x], steepestStep);
        const bool slopesAcross = opaqueColor(across[x]) != 0 && !exceeds(across[x], steepest);
        const bool slopesDown = opaqueColor(down[x]) != 0 && !exceeds(down[x], steepest);
        result[x] = isSmooth & (slopesAcross | slopesDown);
    }
}

bool Gradients::contain(int x, int y) {
    const int left = x - x % Image::blockWidth;
    if (left != area.x || y != rowY) goTo(left, y);
    const int place = x - left;
    // Most of a text's pixels need no further look.
    if (place > 0 && isSteep(row[place - 1], row[place])) return false;
    if (place + 1 < area.width && isSteep(row[place], row[place + 1])) return false;
    if (!isKnown) find(block, {area.width, area.height}, y - area.y, known);
    isKnown = true;
    return known[static_cast<std::size_t>(place)];
}

void Gradients::goTo(int left, int y) {
    const int blockColumn = left / Image::blockWidth;
    const int blockRow = y / Image::blockHeight;
    area = image.blockRect(blockColumn, blockRow);
    block = image.blockPixels(blockColumn, blockRow);
    row = block + (y - area.y) * Image::blockWidth;
    rowY = y;
    isKnown = false;
}

} // namespace clipwren
