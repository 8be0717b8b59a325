#include "encoding/Gradients.h"

#include "tests/support/TestPicture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>

namespace clipwren {
namespace {

int largestDifference(Pixel a, Pixel b) {
    int largest = 0;
    for (const int shift : {0, 8, 16})
        largest = std::max(
            largest, std::abs(static_cast<int>(a >> shift & 0xFF) - static_cast<int>(b >> shift & 0xFF)));
    return largest;
}

// Pixel by pixel: neighbours differ by at most four, and what is eight pixels farther right or else left,
// farther down or else up, by one to thirty-two.
bool isInGradient(const TestPicture& picture, int x, int y) {
    const int left = x - x % Image::blockWidth;
    const int top = y - y % Image::blockHeight;
    const auto isInside = [&](int otherX, int otherY) {
        return otherX >= left && otherX < std::min(left + Image::blockWidth, picture.width) &&
               otherY >= top && otherY < std::min(top + Image::blockHeight, picture.height);
    };
    const auto differenceTo = [&](int otherX, int otherY) {
        const auto at = [&](int column, int row) {
            return picture.pixels[static_cast<std::size_t>(row * picture.width + column)];
        };
        return isInside(otherX, otherY) ? largestDifference(at(x, y), at(otherX, otherY)) : 0;
    };
    for (const auto& [dx, dy] : {std::pair{-1, 0}, {1, 0}, {0, -1}, {0, 1}})
        if (differenceTo(x + dx, y + dy) > 4) return false;
    const int across = isInside(x + 8, y) ? differenceTo(x + 8, y) : differenceTo(x - 8, y);
    const int down = isInside(x, y + 8) ? differenceTo(x, y + 8) : differenceTo(x, y - 8);
    return (across > 0 && across <= 32) || (down > 0 && down <= 32);
}

// Slopes of various steepness in each component, with sudden steps and some noise.
TestPicture variousSlopes(int width, int height, std::mt19937& random) {
    TestPicture picture(width, height);
    int base[3]{};
    int slopeAcross[3]{};
    int slopeDown[3]{};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if ((x % 40 == 0 && y % 8 == 0) || random() % 400 == 0)
                for (int i = 0; i < 3; ++i) {
                    base[i] = static_cast<int>(random() % 256);
                    slopeAcross[i] = static_cast<int>(random() % 12) - 6;
                    slopeDown[i] = static_cast<int>(random() % 12) - 6;
                }
            Pixel pixel = random() % 2 ? 0xFF000000 : 0;
            for (int i = 0; i < 3; ++i) {
                const int value = base[i] + slopeAcross[i] * (x % 40) + slopeDown[i] * (y % 8);
                pixel |= static_cast<Pixel>(std::clamp(value, 0, 255)) << (8 * i);
            }
            picture.at(x, y) = pixel;
        }
    }
    return picture;
}

TEST(Gradients, AreToldByThePixelsAround) {
    std::mt19937 random(5);
    int found = 0;
    for (const auto& [width, height] :
         {std::pair{64, 16}, {200, 50}, {71, 17}, {84, 21}, {9, 30}, {3, 3}, {1, 1}}) {
        const TestPicture picture = variousSlopes(width, height, random);
        const Image image = picture.image();
        Gradients gradients(image);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const bool expected = isInGradient(picture, x, y);
                ASSERT_EQ(gradients.contain(x, y), expected)
                    << x << ' ' << y << " of " << width << 'x' << height;
                found += expected;
            }
    }
    EXPECT_GT(found, 1000);
}

TEST(Gradients, RowsMayBeAskedForInAnyOrder) {
    std::mt19937 random(6);
    const TestPicture picture = variousSlopes(200, 50, random);
    const Image image = picture.image();
    Gradients gradients(image);
    for (int i = 0; i < 5000; ++i) {
        const int x = static_cast<int>(random() % 200);
        const int y = static_cast<int>(random() % 50);
        ASSERT_EQ(gradients.contain(x, y), isInGradient(picture, x, y)) << x << ' ' << y;
    }
}

TEST(Gradients, FlatAreasAreNone) {
    const Image image = TestPicture(100, 40, 0xFF123456).image();
    Gradients gradients(image);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 100; ++x)
            ASSERT_FALSE(gradients.contain(x, y));
}

} // namespace
} // namespace clipwren
