#pragma once

#include "base/Image.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace clipwren {

// One image of a GIF and what a viewer shows once it is drawn.
struct DecodedGifFrame {
    PixelRect rect;
    int hundredths = 0;
    int disposal = 0;
    int paletteSize = 0; // entries of its own table, 0 without one
    bool hasTransparency = false;
    std::vector<Pixel> shown; // the whole screen, 0x00RRGGBB, row by row; 0xFF000000 where nothing was drawn
};

// A GIF as giflib, which shares nothing with the program, reads it.
struct DecodedGif {
    std::string version; // "GIF89a"
    PixelSize size;
    std::optional<int> loopCount; // none: played once
    std::vector<DecodedGifFrame> frames;
    std::string error; // empty when the file was read to its end

    // With `keepPixels` false only the last frame's pixels are kept.
    static DecodedGif read(std::span<const std::uint8_t> bytes, bool keepPixels = true);
    static DecodedGif read(const std::filesystem::path& path, bool keepPixels = true);

    int totalHundredths() const;
};

} // namespace clipwren
