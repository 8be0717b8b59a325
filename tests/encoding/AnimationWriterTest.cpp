#include "encoding/AnimationWriter.h"

#include "tests/support/DecodedGif.h"
#include "tests/support/MemorySink.h"
#include "tests/support/TestPicture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace clipwren {
namespace {

struct Written {
    bool succeeded = false;
    std::vector<std::uint8_t> bytes;
    DecodedGif gif;
};

Animation animationOf(const std::vector<Image>& images, std::int64_t hundredths) {
    return {.frameCount = images.size(),
            .preview = [&images](std::size_t i) { return images[i]; },
            .frame = [&images, hundredths](std::size_t i) { return AnimationFrame{images[i], hundredths}; }};
}

Written write(const std::vector<Image>& images, unsigned threads = 2, std::int64_t hundredths = 7) {
    MemorySink sink;
    const Animation animation = animationOf(images, hundredths);
    Written written;
    written.succeeded = writeAnimation(animation, sink, threads);
    written.gif = DecodedGif::read(sink.bytes);
    written.bytes = std::move(sink.bytes);
    EXPECT_EQ(written.gif.error, "");
    return written;
}

// A dark window on a grey ground that moves by a step a frame, with a caret that blinks.
std::vector<TestPicture> movingWindow(int width, int height, int frames) {
    std::vector<TestPicture> pictures;
    for (int i = 0; i < frames; ++i) {
        TestPicture picture(width, height, 0xFFC0C0C0);
        picture.fill(PixelRect{i * 3, i * 2, 30, 20}.intersection({0, 0, width, height}), 0xFF202040);
        if (i % 2) picture.fill({width - 5, height - 8, 1, 6}, 0xFF000000);
        pictures.push_back(picture);
    }
    return pictures;
}

std::vector<Image> sharedImages(const std::vector<TestPicture>& pictures) {
    std::vector<Image> images{pictures.front().image()};
    for (std::size_t i = 1; i < pictures.size(); ++i)
        images.push_back(pictures[i].imageAfter(images.back()));
    return images;
}

// Neighbouring frames of many colours, everything in motion.
std::vector<Image> noise(int width, int height, int frames) {
    std::mt19937 random(11);
    std::vector<Image> images;
    for (int i = 0; i < frames; ++i) {
        TestPicture picture(width, height);
        for (Pixel& pixel : picture.pixels)
            pixel = 0xFF000000 | (random() & 0xFFFFFF);
        images.push_back(picture.image());
    }
    return images;
}

TEST(AnimationWriter, FewColorsComeBackExactly) {
    const auto pictures = movingWindow(200, 100, 20);
    const Written written = write(sharedImages(pictures));
    ASSERT_TRUE(written.succeeded);
    EXPECT_EQ(written.gif.size, (PixelSize{200, 100}));
    EXPECT_EQ(written.gif.loopCount, 0);
    ASSERT_EQ(written.gif.frames.size(), pictures.size());
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        EXPECT_EQ(written.gif.frames[i].shown, pictures[i].colors()) << "frame " << i;
        EXPECT_EQ(written.gif.frames[i].hundredths, 7);
    }
}

TEST(AnimationWriter, OnlyTheChangeIsWritten) {
    TestPicture picture(300, 200, 0xFFFFFFFF);
    std::vector<Image> images{picture.image()};
    picture.fill({40, 50, 3, 2}, 0xFFFF0000);
    images.push_back(picture.imageAfter(images.back()));
    const Written written = write(images);
    ASSERT_EQ(written.gif.frames.size(), 2u);
    EXPECT_EQ(written.gif.frames[0].rect, (PixelRect{0, 0, 300, 200}));
    EXPECT_EQ(written.gif.frames[1].rect, (PixelRect{40, 50, 3, 2}));
}

TEST(AnimationWriter, AnEqualFrameIsATinyImage) {
    const Image image = TestPicture(300, 200, 0xFFFFFFFF).image();
    const Written written = write({image, image, image});
    ASSERT_EQ(written.gif.frames.size(), 3u);
    EXPECT_EQ(written.gif.frames[2].rect.area(), 1);
    EXPECT_EQ(written.gif.frames[2].shown, written.gif.frames[0].shown);
    EXPECT_EQ(written.gif.totalHundredths(), 21);
}

TEST(AnimationWriter, TheSameBytesWhateverTheNumberOfThreads) {
    std::vector<std::vector<Image>> recordings{sharedImages(movingWindow(150, 90, 25)), noise(90, 70, 9)};
    for (const auto& images : recordings) {
        const Written alone = write(images, 1);
        for (const unsigned threads : {2u, 3u, 8u})
            EXPECT_EQ(write(images, threads).bytes, alone.bytes) << threads << " threads";
    }
}

TEST(AnimationWriter, ManyColorsStayNear) {
    TestPicture picture(256, 128);
    for (int y = 0; y < 128; ++y)
        for (int x = 0; x < 256; ++x)
            picture.at(x, y) = 0xFF000000 | static_cast<Pixel>(x << 16 | y * 2 << 8 | (x + y) / 3);
    const Written written = write({picture.image()});
    ASSERT_EQ(written.gif.frames.size(), 1u);
    double squares = 0;
    for (std::size_t i = 0; i < picture.pixels.size(); ++i)
        for (const int shift : {0, 8, 16}) {
            const int difference = static_cast<int>(picture.pixels[i] >> shift & 0xFF) -
                                   static_cast<int>(written.gif.frames[0].shown[i] >> shift & 0xFF);
            squares += difference * difference;
        }
    EXPECT_LT(std::sqrt(squares / static_cast<double>(picture.pixels.size() * 3)), 12);
}

double meanDifference(const std::vector<Pixel>& shown, const std::vector<Pixel>& wanted) {
    double sum = 0;
    for (std::size_t i = 0; i < shown.size(); ++i)
        for (const int shift : {0, 8, 16})
            sum += std::abs(static_cast<int>(shown[i] >> shift & 0xFF) -
                            static_cast<int>(wanted[i] >> shift & 0xFF));
    return sum / static_cast<double>(shown.size());
}

// A picture of many colours that stands still beside a small change.
std::vector<TestPicture> stillPicture(int frames) {
    TestPicture picture(256, 128);
    for (int y = 0; y < 128; ++y)
        for (int x = 0; x < 256; ++x)
            picture.at(x, y) =
                0xFF000000 | static_cast<Pixel>(x << 16 | y * 2 << 8 | ((x * 7) ^ (y * 3)) % 256);
    std::vector<TestPicture> pictures;
    for (int i = 0; i < frames; ++i) {
        picture.fill({4, 4, 6, 6}, 0xFF000000 | static_cast<Pixel>(i * 0x010305));
        pictures.push_back(picture);
    }
    return pictures;
}

TEST(AnimationWriter, WhatStandsStillComesNearer) {
    const auto pictures = stillPicture(40);
    const Written written = write(sharedImages(pictures));
    ASSERT_EQ(written.gif.frames.size(), 40u);
    const double first = meanDifference(written.gif.frames[0].shown, pictures[0].colors());
    const double last = meanDifference(written.gif.frames[39].shown, pictures[39].colors());
    EXPECT_GT(first, 2);
    EXPECT_LT(last, first * 0.95);
}

TEST(AnimationWriter, WhatStandsStillDoesNotBoil) {
    const auto pictures = stillPicture(40);
    const Written written = write(sharedImages(pictures));
    ASSERT_EQ(written.gif.frames.size(), 40u);
    double steps = 0;
    for (std::size_t frame = 1; frame < 40; ++frame)
        for (std::size_t i = 256 * 16; i < 256 * 128; ++i) {
            const auto brightness = [](Pixel c) {
                return 0.30 * (c >> 16 & 0xFF) + 0.59 * (c >> 8 & 0xFF) + 0.11 * (c & 0xFF);
            };
            steps += std::abs(brightness(written.gif.frames[frame].shown[i]) -
                              brightness(written.gif.frames[frame - 1].shown[i]));
        }
    EXPECT_LT(steps / (39 * 256.0 * 112), 0.02);
}

TEST(AnimationWriter, ExactPixelsStayExact) {
    const auto pictures = movingWindow(300, 150, 60);
    const Written written = write(sharedImages(pictures));
    ASSERT_EQ(written.gif.frames.size(), 60u);
    for (std::size_t i = 0; i < 60; ++i)
        ASSERT_EQ(written.gif.frames[i].shown, pictures[i].colors()) << "frame " << i;
}

TEST(AnimationWriter, PicturesOfAnotherSizeAreFitted) {
    TestPicture small(30, 20, 0xFF00FF00);
    const Written written = write(
        {TestPicture(50, 40, 0xFF0000FF).image(), small.image(), TestPicture(70, 60, 0xFFFF0000).image()});
    ASSERT_TRUE(written.succeeded);
    ASSERT_EQ(written.gif.frames.size(), 3u);
    TestPicture expected(50, 40);
    expected.fill({0, 0, 30, 20}, 0xFF00FF00);
    EXPECT_EQ(written.gif.frames[1].shown, expected.colors());
    EXPECT_EQ(written.gif.frames[2].shown, TestPicture(50, 40, 0xFFFF0000).colors());
}

TEST(AnimationWriter, ExtremeShapesComeBackExactly) {
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 300}, {300, 1}, {4'096, 3}, {65'535, 1}}) {
        TestPicture picture(width, height, 0xFF123456);
        picture.at(width - 1, height - 1) = 0xFFFFFFFF;
        const Written written = write({picture.image(), TestPicture(width, height).image()});
        ASSERT_EQ(written.gif.frames.size(), 2u);
        EXPECT_EQ(written.gif.frames[0].shown, picture.colors());
        EXPECT_EQ(written.gif.frames[1].shown, TestPicture(width, height).colors());
    }
}

TEST(AnimationWriter, APictureBeyondTheFormatIsRefused) {
    MemorySink sink;
    const std::vector<Image> wide{TestPicture(65'536, 1).image()};
    EXPECT_FALSE(writeAnimation(animationOf(wide, 5), sink, 1));
}

TEST(AnimationWriter, AFullDiskAtAnyByteIsAFailure) {
    const auto images = sharedImages(movingWindow(60, 40, 4));
    const std::size_t size = write(images).bytes.size();
    for (std::size_t capacity = 0; capacity < size; capacity += 1 + capacity / 16) {
        MemorySink sink;
        sink.capacity = capacity;
        EXPECT_FALSE(writeAnimation(animationOf(images, 5), sink, 2));
    }
}

} // namespace
} // namespace clipwren
