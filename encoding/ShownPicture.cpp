#include "encoding/ShownPicture.h"

#include "encoding/PaletteIndex.h"

#include <algorithm>
#include <array>
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

} // namespace

ShownPicture::ShownPicture(PixelSize size)
    : size(size),
      colors(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height), nothingYet) {}

std::vector<IndexChoice> ShownPicture::draw(const FrameChange& change, std::span<const std::uint8_t> indices,
                                            const Palette& palette, std::uint8_t transparent, Staying staying,
                                            Healer& healer) {
    std::vector<IndexChoice> result(static_cast<std::size_t>(change.rect.area()), {transparent, transparent});
    if (staying == Staying::asCompressed) offerEqualEntries(result, change.rect, palette, transparent);
    const std::size_t changedRuns = change.runs.size() - change.healingRuns;
    const bool mostMoves = 2 * change.colors.size() > colors.size();
    const std::uint32_t tolerance = mostMoves ? unnoticedInMotion : unnoticed;
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

std::uint32_t ShownPicture::drawRun(const PixelRun& run, const DrawnRun& drawn) {
    Pixel* const shown = colors.data() + offset(run.x, run.y);
    // Runs end with their block. What can be done for many pixels at once comes first.
    std::array<Pixel, Image::blockWidth> offered;
    std::array<std::uint32_t, Image::blockWidth> before;
    std::array<std::uint32_t, Image::blockWidth> after;
    const auto length = static_cast<std::size_t>(run.length);
    for (std::size_t i = 0; i < length; ++i)
        offered[i] = (*drawn.palette)[drawn.indices[i]];
    for (std::size_t i = 0; i < length; ++i) {
        before[i] = difference(shown[i], drawn.wanted[i]);
        after[i] = difference(offered[i], drawn.wanted[i]);
    }
    std::uint32_t misfit = 0;
    for (std::size_t i = 0; i < length; ++i) {
        const bool mayStay =
            (after[i] > 0) & (shown[i] != nothingYet) & (before[i] <= after[i] + drawn.tolerance);
        // Selected rather than branched to: in moving pictures nobody can foresee it.
        const bool stays = (shown[i] == offered[i]) | mayStay;
        misfit += stays ? before[i] : after[i];
        shown[i] = stays ? shown[i] : offered[i];
        drawn.target[i] = stays ? drawn.target[i] : IndexChoice{drawn.indices[i], drawn.indices[i]};
    }
    return misfit;
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
