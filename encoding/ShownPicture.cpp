#include "encoding/ShownPicture.h"

namespace clipwren {

namespace {

// No colour: so that all of the first frame is drawn.
constexpr Pixel nothingYet = 0xFFFFFFFF;

} // namespace

ShownPicture::ShownPicture(PixelSize size)
    : size(size),
      colors(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height), nothingYet) {}

std::vector<std::uint8_t> ShownPicture::draw(const FrameChange& change, const IndexedColors& indexed,
                                             std::uint8_t transparent) {
    std::vector<std::uint8_t> result(static_cast<std::size_t>(change.rect.area()), transparent);
    const std::uint8_t* next = indexed.indices.data();
    for (const PixelRun& run : change.runs) {
        std::uint8_t* target =
            result.data() + (run.y - change.rect.y) * change.rect.width + (run.x - change.rect.x);
        Pixel* shown = colors.data() + offset(run.x, run.y);
        for (int i = 0; i < run.length; ++i) {
            const std::uint8_t index = *next++;
            const Pixel color = indexed.palette[index];
            if (shown[i] == color) continue;
            shown[i] = color;
            target[i] = index;
        }
    }
    return result;
}

} // namespace clipwren
