#pragma once

namespace clipwren {

// The number of a drawn picture, written into its top left corner as black and white squares, least
// significant bit first. They survive scaling to half the size.
struct FrameCounter {
    static constexpr int bits = 24;
    static constexpr int side = 16; // pixels of one square

    // `brightnessAt(x, y)` gives 0 to 255 for the centre of a square, in pixels of the drawn picture.
    template <typename BrightnessAt>
    static int read(const BrightnessAt& brightnessAt) {
        int number = 0;
        for (int bit = 0; bit < bits; ++bit)
            if (brightnessAt(bit * side + side / 2, side / 2) > 127) number |= 1 << bit;
        return number;
    }
};

} // namespace clipwren
