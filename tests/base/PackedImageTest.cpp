#include "base/PackedImage.h"

#include "tests/support/Pictures.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <random>
#include <vector>

namespace clipwren {
namespace {

Image noise(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<Pixel> pixels(static_cast<std::size_t>(width * height));
    for (Pixel& pixel : pixels)
        pixel = static_cast<Pixel>(random());
    return Image(PixelView{pixels.data(), width, height, width});
}

TEST(PackedImage, UnpacksToTheVerySamePixels) {
    for (const auto& [width, height] : {std::pair{1, 1}, {64, 16}, {65, 17}, {200, 133}, {800, 450}}) {
        const Image image = noise(width, height, 1);
        ImagePacker packer;
        ImageUnpacker unpacker;
        const Image back = unpacker.unpack(packer.pack(image));
        EXPECT_EQ(back.bounds(), image.bounds());
        EXPECT_EQ(pixelsOf(back), pixelsOf(image));
    }
}

TEST(PackedImage, SharesWhatPicturesShareWithTheOneBefore) {
    std::mt19937 random(2);
    std::vector<Image> images{noise(200, 100, 3)};
    for (int i = 0; i < 30; ++i) {
        const std::vector<Pixel> fresh(40 * 20, static_cast<Pixel>(random()));
        const Image::Patch patch{
            {static_cast<int>(random() % 160), static_cast<int>(random() % 80), 40, 20}, fresh.data(), 40};
        images.push_back(images.back().replacing({&patch, 1}));
        if (i == 15) images.push_back(noise(90, 100, 4)); // another size, and back again
        if (i == 15) images.push_back(images[images.size() - 2]);
    }
    ImagePacker packer;
    std::vector<PackedImage> packed;
    for (const Image& image : images)
        packed.push_back(packer.pack(image));
    packer = {};

    ImageUnpacker unpacker;
    std::optional<Image> before;
    for (std::size_t i = 0; i < images.size(); ++i) {
        const Image image = unpacker.unpack(packed[i]);
        ASSERT_EQ(pixelsOf(image), pixelsOf(images[i])) << i;
        if (before) {
            EXPECT_EQ(image.blocksDiffering(*before), images[i].blocksDiffering(images[i - 1])) << i;
        }
        before = image;
    }
}

TEST(PackedImage, SharesAlsoAfterARestWithWhatHasEqualPixels) {
    const Image first = noise(200, 100, 5);
    const std::vector<Pixel> fresh(40 * 20, 0xFF00FF00);
    const Image::Patch patch{{70, 20, 40, 20}, fresh.data(), 40};
    const std::vector<Pixel> pixels = pixelsOf(first.replacing({&patch, 1}));
    const Image second(PixelView{pixels.data(), 200, 100, 200}); // no block of the first one
    const Image third = noise(200, 101, 6);

    ImagePacker packer;
    packer.rest();
    const PackedImage one = packer.pack(first);
    const std::int64_t before = packer.byteCount();
    packer.rest();
    const PackedImage two = packer.pack(second);
    EXPECT_LT(packer.byteCount() - before, before / 4);
    packer.rest();
    const PackedImage three = packer.pack(third); // of another size

    ImageUnpacker unpacker;
    const Image unpackedFirst = unpacker.unpack(one);
    const Image unpackedSecond = unpacker.unpack(two);
    EXPECT_EQ(pixelsOf(unpackedFirst), pixelsOf(first));
    EXPECT_EQ(pixelsOf(unpackedSecond), pixels);
    EXPECT_EQ(unpackedSecond.blocksDiffering(unpackedFirst),
              (std::vector<PixelRect>{{64, 16, 64, 16}, {64, 32, 64, 16}}));
    EXPECT_EQ(pixelsOf(unpacker.unpack(three)), pixelsOf(third));
}

TEST(PackedImage, CanBeUnpackedInAnyOrder) {
    ImagePacker packer;
    std::vector<PackedImage> packed;
    for (unsigned i = 0; i < 5; ++i)
        packed.push_back(packer.pack(noise(100, 50, i)));
    ImageUnpacker unpacker;
    for (const unsigned i : {4u, 0u, 2u, 2u, 1u, 3u, 0u})
        EXPECT_EQ(pixelsOf(unpacker.unpack(packed[i])), pixelsOf(noise(100, 50, i)));
}

TEST(PackedImage, CopiesOfAnUnpackerGoOnByThemselves) {
    ImagePacker packer;
    const PackedImage one = packer.pack(noise(100, 50, 1)), two = packer.pack(noise(100, 50, 2));
    ImageUnpacker unpacker;
    unpacker.unpack(one);
    ImageUnpacker copy = unpacker;
    EXPECT_EQ(pixelsOf(copy.unpack(two)), pixelsOf(noise(100, 50, 2)));
    EXPECT_EQ(pixelsOf(unpacker.unpack(two)), pixelsOf(noise(100, 50, 2)));
}

} // namespace
} // namespace clipwren
