#include "encoding/GifWriter.h"

#include "encoding/LzwEncoder.h"
#include "tests/support/DecodedGif.h"
#include "tests/support/MemorySink.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace clipwren {
namespace {

GifFrame frameOf(const PixelRect& rect, std::size_t colors, std::int64_t hundredths) {
    GifFrame frame{.rect = rect, .hundredths = hundredths, .minimumCodeSize = minimumCodeSize(colors)};
    for (std::size_t i = 0; i < colors; ++i)
        frame.palette.push_back(static_cast<Pixel>(i * 0x010203));
    const std::vector<IndexChoice> indices(static_cast<std::size_t>(rect.area()));
    frame.data = LzwEncoder().encode(indices, frame.minimumCodeSize);
    return frame;
}

TEST(GifWriter, WritesTheFixedBlocksByteForByte) {
    MemorySink sink;
    GifWriter writer(sink);
    writer.begin({0x1234, 0x0102}, {0x010203, 0x0A0B0C, 0xFFFFFF});
    writer.end();
    const std::vector<std::uint8_t> expected{
        'G',  'I',  'F', '8', '9', 'a', 0x34, 0x12, 0x02, 0x01, 0xF1, 0, 0, // screen
        1,    2,    3,   10,  11,  12,  255,  255,  255,  0,    0,    0,    // four colours
        0x21, 0xFF, 11,  'N', 'E', 'T', 'S',  'C',  'A',  'P',  'E',        //
        '2',  '.',  '0', 3,   1,   0,   0,    0,                            // for ever
        0x3B};
    EXPECT_EQ(sink.bytes, expected);
}

TEST(GifWriter, WritesOneImageByteForByte) {
    MemorySink sink;
    GifWriter writer(sink);
    writer.frame({.rect = {1, 2, 2, 1},
                  .hundredths = 0x0107,
                  .palette = {0x112233, 0x445566, 0},
                  .transparency = std::uint8_t{2},
                  .minimumCodeSize = 2,
                  .data = {0xAA, 0xBB}});
    const std::vector<std::uint8_t> expected{
        0x21, 0xF9, 4,    0x05, 0x07, 0x01, 2, 0,                // graphic control
        0x2C, 1,    0,    2,    0,    2,    0, 1, 0, 0x81,       // descriptor
        0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0, 0, 0, 0,    0, 0, // four colours
        2,    2,    0xAA, 0xBB, 0,                               // data
    };
    EXPECT_EQ(sink.bytes, expected);
}

TEST(GifWriter, TablesAndCodesAreAsSmallAsTheyCanBe) {
    EXPECT_EQ(minimumCodeSize(1), 2);
    EXPECT_EQ(minimumCodeSize(2), 2);
    EXPECT_EQ(minimumCodeSize(4), 2);
    EXPECT_EQ(minimumCodeSize(5), 3);
    EXPECT_EQ(minimumCodeSize(16), 4);
    EXPECT_EQ(minimumCodeSize(17), 5);
    EXPECT_EQ(minimumCodeSize(129), 8);
    EXPECT_EQ(minimumCodeSize(256), 8);
    for (const auto& [colors, table] :
         {std::pair{1, 2}, {2, 2}, {3, 4}, {16, 16}, {17, 32}, {200, 256}, {256, 256}}) {
        MemorySink sink;
        GifWriter writer(sink);
        writer.begin({3, 3}, {0, 0xFFFFFF});
        writer.frame(frameOf({0, 0, 3, 3}, static_cast<std::size_t>(colors), 5));
        writer.end();
        const DecodedGif gif = DecodedGif::read(sink.bytes);
        EXPECT_EQ(gif.error, "");
        ASSERT_EQ(gif.frames.size(), 1u);
        EXPECT_EQ(gif.frames[0].paletteSize, table);
    }
}

TEST(GifWriter, LoopsForEverAndLeavesImagesInPlace) {
    MemorySink sink;
    GifWriter writer(sink);
    writer.begin({20, 10}, {0, 0xFFFFFF});
    writer.frame(frameOf({0, 0, 20, 10}, 3, 12));
    writer.frame(frameOf({5, 4, 2, 3}, 9, 2));
    writer.end();
    const DecodedGif gif = DecodedGif::read(sink.bytes);
    EXPECT_EQ(gif.error, "");
    EXPECT_EQ(gif.version, "GIF89a");
    EXPECT_EQ(gif.size, (PixelSize{20, 10}));
    EXPECT_EQ(gif.loopCount, 0);
    ASSERT_EQ(gif.frames.size(), 2u);
    EXPECT_EQ(gif.frames[1].rect, (PixelRect{5, 4, 2, 3}));
    EXPECT_EQ(gif.frames[0].hundredths, 12);
    EXPECT_EQ(gif.frames[1].hundredths, 2);
    EXPECT_EQ(gif.frames[1].disposal, 1);
}

TEST(GifWriter, ImagesWithoutATableUseTheSharedOne) {
    MemorySink sink;
    GifWriter writer(sink);
    writer.begin({2, 1}, {0x112233, 0x445566, 0x778899});
    GifFrame frame{.rect = {0, 0, 2, 1}, .hundredths = 3, .minimumCodeSize = 2};
    frame.data = LzwEncoder().encode(std::array{IndexChoice{2, 2}, IndexChoice{1, 1}}, 2);
    writer.frame(frame);
    writer.end();
    const DecodedGif gif = DecodedGif::read(sink.bytes);
    EXPECT_EQ(gif.error, "");
    ASSERT_EQ(gif.frames.size(), 1u);
    EXPECT_EQ(gif.frames[0].shown, (std::vector<Pixel>{0x778899, 0x445566}));
    EXPECT_EQ(gif.frames[0].paletteSize, 0);
}

TEST(GifWriter, AVeryLongDelayIsSharedAmongEmptyImages) {
    for (const std::int64_t hundredths : {65'535, 65'536, 65'537, 65'538, 131'070, 131'071, 8'640'000}) {
        MemorySink sink;
        GifWriter writer(sink);
        writer.begin({4, 4}, {0, 0xFFFFFF});
        writer.frame(frameOf({1, 1, 3, 3}, 3, hundredths));
        writer.end();
        const DecodedGif gif = DecodedGif::read(sink.bytes);
        EXPECT_EQ(gif.error, "");
        EXPECT_EQ(gif.totalHundredths(), hundredths);
        EXPECT_EQ(gif.frames.size(), static_cast<std::size_t>((hundredths + 65'534) / 65'535));
        for (const DecodedGifFrame& frame : gif.frames) {
            EXPECT_GE(frame.hundredths, 2);
            EXPECT_EQ(frame.shown, gif.frames[0].shown);
        }
    }
}

} // namespace
} // namespace clipwren
