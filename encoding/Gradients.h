#pragma once

#include "base/Image.h"

#include <array>

namespace clipwren {

// Tells the pixels of a picture that belong to a gradient: where neighbours hardly differ, but those farther
// off do. It looks no farther than the pixel's block, so that what happens elsewhere changes nothing. The
// picture outlives this object; those of one row are best asked for together.
class Gradients {
public:
    explicit Gradients(const Image& image) : image(image) {}

    bool contain(int x, int y);

private:
    using RowFlags = std::array<bool, Image::blockWidth>;

    void goTo(int left, int y);
    static void find(const Pixel* block, PixelSize size, int y, RowFlags& result);

    const Image& image;
    // One row of a block.
    PixelRect area;
    const Pixel* block = nullptr;
    const Pixel* row = nullptr;
    int rowY = -1;
    bool isKnown = false;
    RowFlags known{};
};

} // namespace clipwren
