#include "encoding/ShownPicture.h"

#include "encoding/PaletteIndex.h"
#include "encoding/WideVectors.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>

namespace clipwren {

namespace {

// No colour: so that all of the first frame is drawn.
constexpr Pixel nothingYet = 0xFFFFFFFF;
// How much nearer a colour has to come before a pixel that stands still is drawn again.
constexpr std::uint32_t worthWhile = 2;
// The same for each step of brightness that it takes.
constexpr std::uint32_t worthOfStep = 3;
// How much farther off than the nearest colour of the palette a pixel may be that needs not be drawn then.
constexpr std::uint32_t unnoticed = 2;
// The same while most of the picture moves.
constexpr std::uint32_t unnoticedInMotion = 6;
// Codes for short rows that stay cost more than drawing them with what surrounds them.
constexpr std::size_t longestRedrawn = 16;

int brightness(Pixel color) {
    return static_cast<int>((77 * (color >> 16 & 0xFF) + 150 * (color >> 8 & 0xFF) + 29 * (color & 0xFF)) >>
                            8);
}

// The sum over red, green and blue.
std::uint32_t difference(Pixel a, Pixel b) {
    std::uint32_t sum = 0;
    for (int shift = 0; shift < 24; shift += 8)
        sum += static_cast<std::uint32_t>(
            std::abs(static_cast<int>(a >> shift & 0xFF) - static_cast<int>(b >> shift & 0xFF)));
    return sum;
}

// All bits of a pixel's choice, or none.
using ChoiceMask = std::uint16_t;
static_assert(sizeof(ChoiceMask) == sizeof(IndexChoice));

} // namespace

ShownPicture::ShownPicture(PixelSize size)
    : size(size),
      colors(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height), nothingYet) {}

// In vectors and without a branch: in moving pictures nobody could foresee it.
CLIPWREN_WIDE_VECTORS
std::uint32_t ShownPicture::drawRun(const PixelRun& run, const DrawnRun& drawn) {
    // Runs end with their block.
    std::array<Pixel, Image::blockWidth> offered;
    std::array<ChoiceMask, Image::blockWidth> stays;
    const auto length = static_cast<std::size_t>(run.length);
    const std::uint8_t* const indices = drawn.indices;
    for (std::size_t i = 0; i < length; ++i)
        offered[i] = (*drawn.palette)[indices[i]];

    Pixel* __restrict const shown = colors.data() + offset(run.x, run.y);
    const Pixel* const wanted = drawn.wanted;
    const std::uint32_t tolerance = drawn.tolerance;
    std::uint32_t misfit = 0;
    for (std::size_t i = 0; i < length; ++i) {
        // What was never drawn is farther off than any colour.
        const std::uint32_t before = difference(shown[i], wanted[i]) + (shown[i] >> 24 << 16);
        const std::uint32_t after = difference(offered[i], wanted[i]);
        // Where an exact colour is offered, no other stays.
        const std::uint32_t allowed = after > 0 ? after + tolerance : 0;
        const std::uint32_t mask = before <= allowed ? 0xFFFFFFFF : 0;
        misfit += (before & mask) | (after & ~mask);
        shown[i] = (shown[i] & mask) | (offered[i] & ~mask);
        stays[i] = static_cast<ChoiceMask>(mask);
    }

    IndexChoice* const target = drawn.target;
    for (std::size_t i = 0; i < length; ++i) {
        constexpr unsigned both = 0x0101; // of its bytes
        const auto choice = std::bit_cast<ChoiceMask>(target[i]);
        target[i] = std::bit_cast<IndexChoice>(
            static_cast<ChoiceMask>((choice & stays[i]) | (indices[i] * both & ~stays[i])));
    }
    return misfit;
}

std::vector<IndexChoice> ShownPicture::draw(const FrameChange& change, std::span<const std::uint8_t> indices,
                                            const Palette& palette, std::uint8_t transparent, Staying staying,
                                            Healer& healer) {
    std::vector<IndexChoice> result(static_cast<std::size_t>(change.rect.area()), {transparent, transparent});
    if (staying == Staying::asCompressed) offerEqualEntries(result, change.rect, palette, transparent);
    const std::size_t changedRuns = change.runs.size() - change.healingRuns;
    const std::uint32_t tolerance = change.isMostOf(colors.size()) ? unnoticedInMotion : unnoticed;
    std::size_t next = 0;
    std::uint32_t steps = 0;
    for (std::size_t i = 0; i < change.runs.size(); ++i) {
        const PixelRun& run = change.runs[i];
        const DrawnRun drawn{indices.data() + next, change.colors.data() + next, &palette, tolerance,
                             result.data() + (run.y - change.rect.y) * change.rect.width +
                                 (run.x - change.rect.x)};
        next += static_cast<std::size_t>(run.length);
        if (i < changedRuns)
            healer.addMisfit(run.x, run.y, drawRun(run, drawn));
        else
            steps += healRun(run, drawn, healer);
    }
    healingSteps = steps;
    if (staying == Staying::exceptBriefly) drawShortRows(result, change.rect, palette, transparent);
    return result;
}

std::uint32_t ShownPicture::healRun(const PixelRun& run, const DrawnRun& drawn, Healer& healer) {
    Pixel* shown = colors.data() + offset(run.x, run.y);
    std::uint32_t misfit = 0;
    std::uint32_t steps = 0;
    for (int i = 0; i < run.length; ++i) {
        const std::uint8_t index = drawn.indices[i];
        const Pixel color = (*drawn.palette)[index];
        const std::uint32_t before = difference(shown[i], drawn.wanted[i]);
        const std::uint32_t after = difference(color, drawn.wanted[i]);
        const auto step = static_cast<std::uint32_t>(std::abs(brightness(color) - brightness(shown[i])));
        if (after + std::max(worthWhile, worthOfStep * step) > before) {
            misfit += before;
            continue;
        }
        misfit += after;
        steps += step;
        shown[i] = color;
        drawn.target[i] = {index, index};
    }
    healer.addMisfit(run.x, run.y, misfit);
    return steps;
}

void ShownPicture::offerEqualEntries(std::span<IndexChoice> choices, const PixelRect& rect,
                                     const Palette& palette, std::uint8_t transparent) const {
    const PaletteIndex entries(palette, transparent);
    IndexChoice* target = choices.data();
    for (int y = rect.y; y < rect.maxY(); ++y) {
        const Pixel* const end = colors.data() + offset(rect.maxX(), y);
        // Neighbours are often equal.
        for (const Pixel* shown = colors.data() + offset(rect.x, y); shown != end;) {
            const Pixel* const next =
                std::find_if(shown, end, [color = *shown](Pixel other) { return other != color; });
            if (const auto entry = entries.find(*shown))
                std::fill_n(target, next - shown, IndexChoice{transparent, *entry});
            target += next - shown;
            shown = next;
        }
    }
}

// Nearly as small as trying out both ways, and much faster. What ends one row and begins the next lies side
// by side for the compression.
void ShownPicture::drawShortRows(std::span<IndexChoice> choices, const PixelRect& rect,
                                 const Palette& palette, std::uint8_t transparent) const {
    const PaletteIndex entries(palette, transparent);
    const auto stays = [&](const IndexChoice& choice) { return choice.first == transparent; };
    const auto width = static_cast<std::size_t>(rect.width);
    for (auto begin = choices.begin(); begin != choices.end();) {
        begin = std::find_if(begin, choices.end(), stays);
        const auto steps = static_cast<std::ptrdiff_t>(repeatedSteps({begin, choices.end()}, transparent));
        const auto end = std::find_if_not(begin + steps, choices.end(), stays);
        if (static_cast<std::size_t>(end - begin) <= longestRedrawn) {
            for (auto choice = begin; choice != end; ++choice) {
                const auto place = static_cast<std::size_t>(choice - choices.begin());
                const std::size_t row =
                    offset(rect.x, rect.y) + place / width * static_cast<std::size_t>(size.width);
                if (const auto entry = entries.find(colors[row + place % width])) *choice = {*entry, *entry};
            }
        }
        begin = end;
    }
}

} // namespace clipwren
