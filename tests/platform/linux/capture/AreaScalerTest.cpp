#include "platform/linux/capture/AreaScaler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace clipwren {

namespace {

struct Picture {
    PixelSize size;
    std::vector<Pixel> pixels;

    explicit Picture(PixelSize size, Pixel color = 0)
        : size(size),
          pixels(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height), color) {}
    PixelView view() const { return {pixels.data(), size.width, size.height, size.width}; }
    Pixel& at(int x, int y) { return pixels[static_cast<std::size_t>(y * size.width + x)]; }
    Pixel at(int x, int y) const { return pixels[static_cast<std::size_t>(y * size.width + x)]; }
};

Picture noise(PixelSize size, unsigned seed) {
    Picture picture(size);
    std::mt19937 random(seed);
    for (Pixel& pixel : picture.pixels)
        pixel = static_cast<Pixel>(random()) | 0xFF000000;
    return picture;
}

Picture scaled(const Picture& source, PixelSize size) {
    Picture result(size);
    AreaScaler(source.size, size)
        .scale(source.view(), {0, 0, size.width, size.height}, result.pixels.data(), size.width);
    return result;
}

// The mean over the source area of one channel, by the definition.
double meanOf(const Picture& source, PixelSize size, int x, int y, int shift) {
    const double left = static_cast<double>(x) * source.size.width / size.width;
    const double right = static_cast<double>(x + 1) * source.size.width / size.width;
    const double top = static_cast<double>(y) * source.size.height / size.height;
    const double bottom = static_cast<double>(y + 1) * source.size.height / size.height;
    double sum = 0;
    for (int sy = static_cast<int>(top); sy < std::min<double>(std::ceil(bottom), source.size.height); ++sy)
        for (int sx = static_cast<int>(left); sx < std::min<double>(std::ceil(right), source.size.width);
             ++sx)
            sum += (std::min<double>(sx + 1, right) - std::max<double>(sx, left)) *
                   (std::min<double>(sy + 1, bottom) - std::max<double>(sy, top)) *
                   (source.at(sx, sy) >> shift & 0xFF);
    return sum / ((right - left) * (bottom - top));
}

constexpr PixelSize sizes[][2] = {{{160, 90}, {80, 45}}, {{160, 90}, {60, 34}},  {{161, 93}, {120, 70}},
                                  {{97, 61}, {96, 60}},  {{300, 200}, {31, 17}}, {{3, 1}, {3, 2}},
                                  {{20, 10}, {47, 25}},  {{1, 1}, {5, 5}},       {{500, 3}, {2, 2}},
                                  {{1600, 9}, {600, 4}}, {{4000, 20}, {480, 2}}, {{7, 300}, {7, 299}}};

} // namespace

TEST(AreaScaler, GivesTheMeanOfTheAreaToWithinRounding) {
    for (const auto& [from, to] : sizes) {
        Picture source = noise(from, 1);
        Picture result = scaled(source, to);
        for (int y = 0; y < to.height; ++y)
            for (int x = 0; x < to.width; ++x)
                for (int shift = 0; shift < 32; shift += 8)
                    ASSERT_NEAR(result.at(x, y) >> shift & 0xFF, meanOf(source, to, x, y, shift), 1.5)
                        << from.width << "x" << from.height << " to " << to.width << "x" << to.height;
    }
}

TEST(AreaScaler, HalvesExactly) {
    Picture source({4, 2});
    source.pixels = {0xFF000000, 0xFF0000FF, 0xFF00FF00, 0xFF00FF00,
                     0xFFFF0000, 0xFF000002, 0xFF00FF00, 0xFF00FF01};
    EXPECT_EQ(scaled(source, {2, 1}).pixels, (std::vector<Pixel>{0xFF400040, 0xFF00FF00}));
}

TEST(AreaScaler, KeepsFlatColours) {
    for (const auto& [from, to] : sizes)
        for (const Pixel color : {0xFF000000u, 0xFFFFFFFFu, 0xFF0180FEu, 0x00000000u, 0xFF7F7F7Fu}) {
            const Picture result = scaled(Picture(from, color), to);
            for (const Pixel pixel : result.pixels)
                ASSERT_EQ(pixel, color);
        }
}

TEST(AreaScaler, CopiesWhereTheSizeStays) {
    const Picture source = noise({65, 33}, 2);
    EXPECT_EQ(scaled(source, source.size).pixels, source.pixels);
}

TEST(AreaScaler, GivesTheSamePixelsInParts) {
    std::mt19937 random(4);
    for (const auto& [from, to] : sizes) {
        const Picture source = noise(from, 3);
        const Picture whole = scaled(source, to);
        AreaScaler scaler(from, to);
        for (int round = 0; round < 20; ++round) {
            const int x = static_cast<int>(random() % static_cast<unsigned>(to.width));
            const int y = static_cast<int>(random() % static_cast<unsigned>(to.height));
            const PixelRect part{x, y, 1 + static_cast<int>(random() % static_cast<unsigned>(to.width - x)),
                                 1 + static_cast<int>(random() % static_cast<unsigned>(to.height - y))};
            Picture expected(to), actual(to);
            for (int row = y; row < part.maxY(); ++row)
                for (int column = x; column < part.maxX(); ++column)
                    expected.at(column, row) = whole.at(column, row);
            scaler.scale(source.view(), part, &actual.at(x, y), to.width);
            ASSERT_EQ(actual.pixels, expected.pixels);
        }
    }
}

TEST(AreaScaler, KnowsWhatASourceRectangleAffects) {
    std::mt19937 random(6);
    for (const auto& [from, to] : sizes) {
        AreaScaler scaler(from, to);
        const Picture before = scaled(Picture(from, 0xFF000000), to);
        for (int round = 0; round < 20; ++round) {
            const int x = static_cast<int>(random() % static_cast<unsigned>(from.width));
            const int y = static_cast<int>(random() % static_cast<unsigned>(from.height));
            const PixelRect rect{x, y, 1 + static_cast<int>(random() % static_cast<unsigned>(from.width - x)),
                                 1 + static_cast<int>(random() % static_cast<unsigned>(from.height - y))};
            Picture source(from, 0xFF000000);
            for (int row = y; row < rect.maxY(); ++row)
                for (int column = x; column < rect.maxX(); ++column)
                    source.at(column, row) = 0xFFFFFFFF;
            const Picture after = scaled(source, to);
            const PixelRect affected = scaler.affected(rect);
            ASSERT_EQ(affected.intersection({0, 0, to.width, to.height}), affected);
            for (int row = 0; row < to.height; ++row)
                for (int column = 0; column < to.width; ++column) {
                    if (affected.intersection({column, row, 1, 1}).isEmpty()) {
                        ASSERT_EQ(after.at(column, row), before.at(column, row));
                    }
                }
        }
        EXPECT_EQ(scaler.affected({0, 0, from.width, from.height}), (PixelRect{0, 0, to.width, to.height}));
    }
}

} // namespace clipwren
