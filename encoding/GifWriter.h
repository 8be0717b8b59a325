#pragma once

#include "base/Geometry.h"
#include "encoding/ByteSink.h"
#include "encoding/Palette.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace clipwren {

// One image of an animation as the file holds it.
struct GifFrame {
    PixelRect rect;                           // inside the screen, at least one pixel
    std::int64_t hundredths = 0;              // how long it is shown
    Palette palette;                          // at most 256 colours; none: those that all images share
    std::optional<std::uint8_t> transparency; // the index that leaves a pixel as it was
    int minimumCodeSize = 0;                  // of the data
    std::vector<std::uint8_t> data;           // LZW codes
};

// The smallest code size that the format allows for that many indices from 0.
int minimumCodeSize(std::size_t indices);

// Writes the blocks of a GIF89a file that plays for ever: `begin` once, `frame` for each image, `end` once.
// Failures are the sink's.
class GifWriter {
public:
    // Neither side of a picture may be longer.
    static constexpr int longestSide = 65535;

    explicit GifWriter(ByteSink& sink) : sink(sink) {}

    // `shared` holds 1 to 256 colours, for all images without a palette of their own.
    void begin(PixelSize screen, const Palette& shared);
    // A frame that is shown for longer than one delay can say is prolonged by empty ones.
    void frame(const GifFrame& frame);
    void end();

private:
    void writeHeader();
    void writeLogicalScreen(PixelSize screen, int tableBits);
    void writeLoopForever();
    void writeImage(const GifFrame& frame, std::uint16_t delay);
    void writeGraphicControl(std::uint16_t delay, std::optional<std::uint8_t> transparency);
    void writeImageDescriptor(const PixelRect& rect, std::optional<int> tableBits);
    void writeImageData(int minimumCodeSize, std::span<const std::uint8_t> data);
    void prolong(std::int64_t hundredths, const PixelRect& rect);

    ByteSink& sink;
};

} // namespace clipwren
