#include "base/Image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace clipwren {
namespace {

struct Pixels {
    int width;
    int height;
    std::vector<Pixel> values;

    Pixels(int width, int height)
        : width(width),
          height(height),
          values(static_cast<std::size_t>(width * height)) {
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = 0xFF000000u | static_cast<Pixel>(i * 2654435761u >> 8);
    }
    PixelView view() const { return {values.data(), width, height, width}; }
    Image::Patch patch(const PixelRect& rect) const {
        return {rect, values.data() + rect.y * width + rect.x, width};
    }
};

std::vector<Pixel> allPixels(const Image& image) {
    std::vector<Pixel> result(static_cast<std::size_t>(image.width() * image.height()));
    image.copy(image.bounds(), result.data(), image.width());
    return result;
}

TEST(Image, HoldsThePixelsItWasMadeOf) {
    for (const auto& [width, height] : {std::pair{1, 1}, {64, 16}, {65, 17}, {200, 33}, {63, 15}}) {
        const Pixels pixels(width, height);
        const Image image(pixels.view());
        EXPECT_EQ(allPixels(image), pixels.values) << width << "x" << height;
        EXPECT_EQ(image.pixel(width - 1, height - 1), pixels.values.back());
    }
}

TEST(Image, MakesPixelsOfUndefinedAlphaOpaque) {
    const Pixels pixels(100, 40);
    Pixels clear = pixels;
    for (Pixel& pixel : clear.values)
        pixel &= 0x00FFFFFF;
    const Image image(clear.view(), Image::Alpha::undefined);
    EXPECT_EQ(allPixels(image), pixels.values);
    EXPECT_EQ(allPixels(Image(clear.view())), clear.values);

    // And a block that differs in nothing but its alpha is the same block.
    const Image again = image.replacing(std::vector{clear.patch({0, 0, 100, 40})}, Image::Alpha::undefined);
    EXPECT_TRUE(again.blocksDiffering(image).empty());
    clear.values[0] ^= 1;
    const Image other = image.replacing(std::vector{clear.patch({0, 0, 100, 40})}, Image::Alpha::undefined);
    EXPECT_EQ(other.pixel(0, 0), pixels.values[0] ^ 1);
    EXPECT_EQ(other.blocksDiffering(image).size(), 1u);
}

TEST(Image, SharesBlocksOfEmptyAreasWithinAPicture) {
    Pixels pixels(200, 50);
    std::fill(pixels.values.begin(), pixels.values.end(), 0xFFEEEEEE);
    pixels.values[20 * 200 + 70] = 0xFF000000; // inside block (1, 1)
    const Image image(pixels.view());
    EXPECT_EQ(allPixels(image), pixels.values);
    EXPECT_EQ(image.blockPixels(0, 0), image.blockPixels(1, 0));
    EXPECT_EQ(image.blockPixels(0, 0), image.blockPixels(2, 1));
    EXPECT_NE(image.blockPixels(0, 0), image.blockPixels(1, 1));

    // And writing to one leaves the others alone.
    pixels.values[5] = 0xFF123456;
    const Image second = image.replacing(std::vector{pixels.patch({0, 0, 10, 10})});
    EXPECT_EQ(allPixels(second), pixels.values);
    EXPECT_EQ(second.blocksDiffering(image), (std::vector<PixelRect>{{0, 0, 64, 16}}));
}

TEST(Image, NominalRowSizeIsFourBytesAPixel) {
    const Image image(Pixels(640, 360).view());
    EXPECT_EQ(image.bytesPerRow(), 2560);
    EXPECT_EQ(image.bytesPerRow() * image.height(), 921'600);
}

TEST(Image, ReplacingSharesEveryBlockOutsideTheChange) {
    Pixels pixels(200, 50);
    const Image first(pixels.view());
    pixels.values[20 * 200 + 70] ^= 0x00FFFFFF; // inside block (1, 1)
    const Image second = first.replacing(std::vector{pixels.patch({60, 10, 30, 20})});
    EXPECT_EQ(allPixels(second), pixels.values);
    EXPECT_EQ(second.blocksDiffering(first), (std::vector<PixelRect>{{64, 16, 64, 16}}));
    EXPECT_EQ(first.blocksDiffering(first).size(), 0u);
}

TEST(Image, TheFirstPictureStaysAsItWas) {
    Pixels pixels(100, 40);
    const auto before = pixels.values;
    const Image first(pixels.view());
    for (Pixel& value : pixels.values)
        value = ~value;
    const Image second = first.replacing(std::vector{pixels.patch({0, 0, 100, 40})});
    EXPECT_EQ(allPixels(first), before);
    EXPECT_EQ(allPixels(second), pixels.values);
}

TEST(Image, PatchesAreClippedToThePicture) {
    const Pixels pixels(70, 20);
    const Image image(pixels.view());
    const std::vector<Pixel> white(40 * 40, 0xFFFFFFFF);
    const Image changed = image.replacing(std::vector<Image::Patch>{{{-10, -10, 40, 40}, white.data(), 40},
                                                                    {{60, 15, 40, 40}, white.data(), 40},
                                                                    {{500, 500, 40, 40}, white.data(), 40}});
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 70; ++x) {
            const bool patched = (x < 30 && y < 30) || (x >= 60 && y >= 15);
            EXPECT_EQ(changed.pixel(x, y), patched ? 0xFFFFFFFFu : image.pixel(x, y)) << x << "," << y;
        }
}

TEST(Image, AnUndoneChangeIsNoChange) {
    Pixels pixels(64, 16);
    const Image first(pixels.view());
    Pixels other = pixels;
    for (Pixel& value : other.values)
        value = ~value;
    const Image second =
        first.replacing(std::vector{other.patch({0, 0, 64, 16}), pixels.patch({0, 0, 64, 16})});
    EXPECT_TRUE(second.blocksDiffering(first).empty());
}

TEST(Image, RepaintsTheBlocksThatAreTouchedOnceAndWhole) {
    Pixels pixels(200, 50);
    const Image first(pixels.view());
    pixels.values[20 * 200 + 70] ^= 0x00FFFFFF;  // inside block (1, 1)
    pixels.values[49 * 200 + 199] ^= 0x00FFFFFF; // the last one
    std::vector<PixelRect> painted;
    const Image second = first.repainting(
        std::vector<PixelRect>{{60, 10, 30, 20}, {70, 20, 1, 1}, {195, 40, 100, 100}, {300, 0, 5, 5}, {}},
        [&](const PixelRect& part, Pixel* to) {
            painted.push_back(part);
            for (int y = 0; y < part.height; ++y)
                for (int x = 0; x < part.width; ++x) // its alpha must not matter
                    to[y * Image::blockWidth + x] =
                        pixels.values[static_cast<std::size_t>((part.y + y) * 200 + part.x + x)] & 0x00FFFFFF;
        },
        Image::Alpha::undefined);
    EXPECT_EQ(painted, (std::vector<PixelRect>{{0, 0, 64, 16},
                                               {64, 0, 64, 16},
                                               {0, 16, 64, 16},
                                               {64, 16, 64, 16},
                                               {192, 32, 8, 16},
                                               {192, 48, 8, 2}}));
    EXPECT_EQ(allPixels(second), pixels.values);
    EXPECT_EQ(second.blocksDiffering(first), (std::vector<PixelRect>{{64, 16, 64, 16}, {192, 48, 8, 2}}));
    EXPECT_EQ(second.allRows()[0], first.allRows()[0]) << "a row without a change is shared";
}

TEST(Image, PicturesOfDifferentSizeShareNothing) {
    const Image small(Pixels(64, 16).view());
    const Image large(Pixels(65, 17).view());
    EXPECT_EQ(large.blocksDiffering(small).size(), 4u);
}

TEST(Image, CopiesAPartIntoWiderRows) {
    const Pixels pixels(150, 40);
    const Image image(pixels.view());
    std::vector<Pixel> part(30 * 100, 7);
    image.copy({50, 10, 90, 20}, part.data(), 100);
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 90; ++x)
            EXPECT_EQ(part[y * 100 + x], image.pixel(50 + x, 10 + y));
        EXPECT_EQ(part[y * 100 + 90], 7u);
    }
}

} // namespace
} // namespace clipwren
