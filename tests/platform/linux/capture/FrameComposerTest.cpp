#include "platform/linux/capture/FrameComposer.h"

#include "tests/support/Pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace clipwren {

namespace {

constexpr Pixel opaque = 0xFF000000;

std::shared_ptr<const CursorImage> arrow() {
    CursorImage image{.width = 12, .height = 19, .hotX = 3, .hotY = 5, .pixels = {}};
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x)
            image.pixels.push_back(x > y ? 0 : x == y ? 0x80402010 : 0xFFFFFFFF);
    return std::make_shared<const CursorImage>(std::move(image));
}

} // namespace

TEST(FrameComposer, BeginsWithABlackFrame) {
    FrameComposer composer({100, 50}, {100, 50});
    const auto frame = composer.compose();
    ASSERT_TRUE(frame);
    EXPECT_EQ(pixelsOf(*frame), std::vector<Pixel>(5000, opaque));
    EXPECT_FALSE(composer.compose());
}

TEST(FrameComposer, CopiesPixelsAndMakesThemOpaque) {
    FrameComposer composer({100, 50}, {100, 50});
    composer.compose();
    const std::vector<Pixel> pixels{0x00112233, 0x80445566, 0xFF778899, 0x00AABBCC};
    composer.update({70, 30, 2, 2}, pixels.data(), 2);
    const auto frame = composer.compose();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->pixel(70, 30), 0xFF112233);
    EXPECT_EQ(frame->pixel(71, 30), 0xFF445566);
    EXPECT_EQ(frame->pixel(70, 31), 0xFF778899);
    EXPECT_EQ(frame->pixel(71, 31), 0xFFAABBCC);
    EXPECT_EQ(frame->pixel(72, 31), opaque);
}

TEST(FrameComposer, MakesNoFrameOfEqualPixels) {
    FrameComposer composer({100, 50}, {50, 25});
    composer.compose();
    const std::vector<Pixel> white(5000, 0x00FFFFFF), black(5000, 0x77000000);
    composer.update({0, 0, 100, 50}, black.data(), 100);
    EXPECT_FALSE(composer.compose());
    composer.update({10, 10, 20, 20}, white.data(), 100);
    EXPECT_TRUE(composer.compose());
    composer.update({10, 10, 20, 20}, white.data(), 100);
    EXPECT_FALSE(composer.compose());
    composer.update({10, 10, 20, 20}, black.data(), 100);
    composer.update({10, 10, 20, 20}, white.data(), 100);
    EXPECT_FALSE(composer.compose());
}

TEST(FrameComposer, SharesWhatDidNotChange) {
    FrameComposer composer({640, 160}, {640, 160});
    const auto first = composer.compose();
    const Pixel white = 0xFFFFFF;
    composer.update({100, 20, 1, 1}, &white, 1);
    const auto second = composer.compose();
    ASSERT_TRUE(first && second);
    EXPECT_EQ(second->blocksDiffering(*first), (std::vector<PixelRect>{{64, 16, 64, 16}}));
}

TEST(FrameComposer, ShowsTheCursorWithHotSpotAndAlpha) {
    FrameComposer composer({100, 50}, {100, 50});
    composer.compose();
    const std::vector<Pixel> gray(5000, 0x808080);
    composer.update({0, 0, 100, 50}, gray.data(), 100);
    composer.setCursor(arrow(), 40, 20);
    const auto frame = composer.compose();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->pixel(37, 16), 0xFFFFFFFF);
    EXPECT_EQ(frame->pixel(37, 15), 0xFF806050); // half of the gray and the cursor's own
    EXPECT_EQ(frame->pixel(39, 15), 0xFF808080);
    EXPECT_EQ(frame->pixel(36, 16), 0xFF808080);
    // Moved away, it leaves what was there.
    composer.setCursor(arrow(), -50, 20);
    const auto without = composer.compose();
    ASSERT_TRUE(without);
    EXPECT_EQ(pixelsOf(*without), std::vector<Pixel>(5000, 0xFF808080));
    composer.setCursor(nullptr, 40, 20);
    EXPECT_FALSE(composer.compose());
}

TEST(FrameComposer, CutsTheCursorAtTheEdges) {
    FrameComposer composer({100, 50}, {100, 50});
    composer.compose();
    for (const auto& [x, y] : {std::pair{0, 0}, {99, 0}, {0, 49}, {99, 49}, {3, 5}, {-8, 20}, {110, 70}}) {
        composer.setCursor(arrow(), x, y);
        const auto frame = composer.compose();
        const PixelRect rect = arrow()->rect(x, y);
        std::vector<Pixel> expected(5000, opaque);
        for (int row = 0; row < 50; ++row)
            for (int column = 0; column < 100; ++column)
                if (!rect.intersection({column, row, 1, 1}).isEmpty()) {
                    const auto above = static_cast<std::size_t>((row - rect.y) * 12 + column - rect.x);
                    Pixel& pixel = expected[static_cast<std::size_t>(row * 100 + column)];
                    pixel = blended(arrow()->pixels[above], pixel);
                }
        if (rect.intersection({0, 0, 100, 50}).isEmpty()) {
            EXPECT_EQ(expected, std::vector<Pixel>(5000, opaque));
        } else {
            ASSERT_TRUE(frame);
            EXPECT_EQ(pixelsOf(*frame), expected) << x << ", " << y;
        }
    }
}

TEST(FrameComposer, IsBlackAfterClearing) {
    FrameComposer composer({100, 50}, {40, 20});
    const std::vector<Pixel> white(5000, 0xFFFFFF);
    composer.update({0, 0, 100, 50}, white.data(), 100);
    composer.compose();
    composer.clear();
    const auto frame = composer.compose();
    ASSERT_TRUE(frame);
    EXPECT_EQ(pixelsOf(*frame), std::vector<Pixel>(800, opaque));
}

TEST(FrameComposer, MakesNoFrameWhileItRestsAndGoesOnWithTheOneItShowed) {
    for (const PixelSize frameSize : {PixelSize{100, 50}, {50, 25}, {40, 20}}) {
        FrameComposer composer({100, 50}, frameSize);
        composer.setCursor(arrow(), 40, 20);
        const auto first = composer.compose();
        ASSERT_TRUE(first);
        composer.rest();
        EXPECT_FALSE(composer.compose());
        // What comes out as it was does not wake it, nor does a pointer elsewhere.
        const std::vector<Pixel> black(5000, opaque), white(5000, 0xFFFFFFFF);
        composer.update({0, 0, 100, 20}, black.data(), 100);
        EXPECT_FALSE(composer.compose());
        composer.update({10, 30, 2, 2}, white.data(), 100);
        const auto second = composer.compose();
        ASSERT_TRUE(second);
        EXPECT_NE(pixelsOf(*second), pixelsOf(*first));
        composer.update({10, 30, 2, 2}, black.data(), 100);
        const auto third = composer.compose();
        ASSERT_TRUE(third);
        EXPECT_EQ(pixelsOf(*third), pixelsOf(*first));
        // A frame that is due is not forgotten.
        composer.update({10, 30, 2, 2}, white.data(), 100);
        composer.rest();
        EXPECT_TRUE(composer.compose());
    }
}

TEST(FrameComposer, NeverDiffersFromTheWholePictureMadeAnew) {
    std::mt19937 random(9);
    const PixelSize regions[][2] = {
        {{230, 140}, {230, 140}}, {{230, 140}, {115, 70}}, {{230, 141}, {97, 59}}, {{50, 30}, {61, 37}}};
    for (const auto& [region, frameSize] : regions) {
        const auto width = static_cast<unsigned>(region.width), height = static_cast<unsigned>(region.height);
        FrameComposer composer(region, frameSize);
        std::vector<Pixel> screen(width * height, opaque);
        std::vector<Pixel> adopted[2];
        std::optional<Image> shown = composer.compose();
        std::shared_ptr<const CursorImage> cursor;
        int x = 0, y = 0;
        for (int round = 0; round < 150; ++round) {
            if (random() % 4 == 0) composer.rest();
            for (unsigned count = random() % 4; count > 0; --count) {
                const int left = static_cast<int>(random() % width),
                          top = static_cast<int>(random() % height);
                const PixelRect rect{left, top, 1 + static_cast<int>(random() % (width - left)),
                                     1 + static_cast<int>(random() % (height - top))};
                const auto base = static_cast<Pixel>(random());
                for (int row = top; row < rect.maxY(); ++row)
                    for (int column = left; column < rect.maxX(); ++column)
                        screen[static_cast<unsigned>(row) * width + column] =
                            (base + static_cast<Pixel>(random() % 3) * 0x101) | opaque;
                composer.update(rect, screen.data() + top * region.width + left, region.width);
            }
            if (random() % 3 == 0) {
                if (random() % 2 == 0) screen[random() % screen.size()] ^= 0x102030;
                std::swap(adopted[0], adopted[1]);
                adopted[0] = screen;
                for (Pixel& pixel : adopted[0]) // its alpha must not matter
                    pixel ^= static_cast<Pixel>(random()) & opaque;
                composer.adopt(adopted[0].data());
            }
            if (random() % 40 == 0) {
                std::fill(screen.begin(), screen.end(), opaque);
                composer.clear();
            }
            if (random() % 2 == 0) {
                cursor = random() % 5 == 0 ? nullptr : arrow();
                x = static_cast<int>(random() % (width + 40)) - 20;
                y = static_cast<int>(random() % (height + 40)) - 20;
                composer.setCursor(cursor, x, y);
            }
            auto next = composer.compose();
            const bool isNew = next.has_value();

            FrameComposer anew(region, frameSize);
            anew.update({0, 0, region.width, region.height}, screen.data(), region.width);
            anew.setCursor(cursor, x, y);
            const auto whole = pixelsOf(*anew.compose());
            ASSERT_EQ(isNew, whole != pixelsOf(*shown));
            if (isNew) shown = next;
            ASSERT_EQ(pixelsOf(*shown), whole);
        }
    }
}

TEST(Blended, LaysPremultipliedColoursOverOpaqueOnes) {
    EXPECT_EQ(blended(0, 0xFF123456), 0xFF123456);
    EXPECT_EQ(blended(0xFFABCDEF, 0xFF123456), 0xFFABCDEF);
    EXPECT_EQ(blended(0x80000000, 0xFFFFFFFF), 0xFF7F7F7F);
    EXPECT_EQ(blended(0x01FFFFFF, 0xFFFFFFFF), 0xFFFFFFFF); // not premultiplied: white at most
}

} // namespace clipwren
