#pragma once

#include "encoding/ColorCensus.h"
#include "encoding/NearestColor.h"
#include "encoding/Palette.h"
#include "encoding/PaletteIndex.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace clipwren {

// Pixels by their number in a palette.
struct IndexedColors {
    Palette palette; // empty: the shared one
    std::vector<std::uint8_t> indices;
    bool manyColors = false; // too many to look at each, as in photographs
    bool allNear = false;    // no colour is off by more than a just noticeable difference
};

// How many of very many colours are told apart when a palette is chosen for them. What moves is well served
// by fewer: the pictures are hardly worse and take far fewer bytes.
enum class Precision { coarse, fine };

// Chooses palettes for the changes of frames. Any thread may ask at any time.
class ColorIndexer {
public:
    // `shared` is a palette that costs nothing: 2 to 256 entries, of which the first is not a colour but
    // leaves pixels as they are.
    explicit ColorIndexer(const Palette& shared);

    // Chooses a palette of at most `limit` colours, 1 to 256, for the pixels, of which there is at least one,
    // and picks an entry for each: the shared palette where it serves so well that a table of its own would
    // not be worth its bytes. Without it no more than `limit` colours stay exact. Equal colours become equal,
    // wherever they are, so that flat areas stay flat; large ones are exact in the shared palette too.
    IndexedColors index(std::span<const Pixel> colors, std::size_t limit,
                        Precision precision = Precision::fine) const;

private:
    // An entry of the shared palette and how far it is off, in just noticeable differences.
    struct SharedEntry {
        std::uint8_t index = 0;
        double distance = 0;
    };
    SharedEntry sharedEntry(Pixel color) const;
    // The shared entry for each colour of the census; nothing when that is not good enough for saving so many
    // bytes.
    std::optional<std::vector<std::uint8_t>> sharedEntries(const ColorCensus& census,
                                                           double savedBytes) const;

    const PaletteIndex sharedIndex;
    const std::vector<PerceptualColor> sharedPlaces; // without the first entry
    const NearestColor sharedNearest;
};

} // namespace clipwren
