#pragma once

#include "encoding/FrameChange.h"
#include "encoding/Healer.h"
#include "encoding/IndexChoices.h"
#include "encoding/Palette.h"

#include <cstdint>
#include <span>
#include <vector>

namespace clipwren {

// How pixels that are shown already in a colour of the palette may be told to a viewer.
enum class Staying {
    alone,         // they stay as they are
    exceptBriefly, // short rows of them are drawn once more with what surrounds them
    asCompressed,  // both ways are left open
};

// What a viewer of the animation sees at one moment: with few colours a frame, it is not always the picture
// that was recorded.
class ShownPicture {
public:
    explicit ShownPicture(PixelSize size);

    // Draws the changed pixels with the colours picked for them, unless what is shown is as near, or nearly
    // so, and those to heal where that brings them nearer; the healer is told what stays wrong. Returns how a
    // viewer gets there: the indices of all pixels of the change's rectangle, row by row, `transparent` where
    // the picture stays as it is.
    std::vector<IndexChoice> draw(const FrameChange& change, std::span<const std::uint8_t> indices,
                                  const Palette& palette, std::uint8_t transparent, Staying staying,
                                  Healer& healer);

    // How much brightness changed where nothing did when it was drawn last.
    std::uint32_t lastHealingSteps() const { return healingSteps; }

private:
    // What one run is drawn with and where its choices go.
    struct DrawnRun {
        const std::uint8_t* indices;
        const Pixel* wanted;
        const Palette* palette;
        std::uint32_t tolerance;
        IndexChoice* target;
    };
    // Returns how far the pixels are now from what was wanted.
    std::uint32_t drawRun(const PixelRun& run, const DrawnRun& drawn);
    // Draws only pixels that come nearer; returns the sum of their steps of brightness.
    std::uint32_t healRun(const PixelRun& run, const DrawnRun& drawn, Healer& healer);
    void offerEqualEntries(std::span<IndexChoice> choices, const PixelRect& rect, const Palette& palette,
                           std::uint8_t transparent) const;
    void drawShortRows(std::span<IndexChoice> choices, const PixelRect& rect, const Palette& palette,
                       std::uint8_t transparent) const;
    std::size_t offset(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(size.width) +
               static_cast<std::size_t>(x);
    }

    PixelSize size;
    std::vector<Pixel> colors;
    std::uint32_t healingSteps = 0;
};

} // namespace clipwren
