#pragma once

#include "encoding/ColorHistogram.h"
#include "encoding/FrameChange.h"
#include "encoding/Palette.h"

namespace clipwren {

// Chooses the colours that the changes of many frames have in common, so that most need no table of their
// own.
class CommonPalette {
public:
    // Looks at what changed, in a few places only where that is much. False when it has so many colours that
    // it is left out.
    bool consider(const Image& previous, const Image& current);

    // The most useful first, so that small indices suffice for many frames.
    Palette choose(std::size_t limit) const;

private:
    Palette mostFramesFirst(const Palette& palette) const;

    // Of the changes that have few colours.
    ColorHistogram pixels;
    ColorHistogram frames;
};

} // namespace clipwren
