#include "encoding/GradientDither.h"

#include "encoding/NearestColor.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

namespace clipwren {

namespace {

// Neighbours in a gradient differ by no more, in red, green and blue each.
constexpr int steepestStep = 4;
// So far away, in pixels, a gradient has changed.
constexpr int reach = 8;
// Nearer to each other two entries show no bands, farther apart they would be seen as dots. In just
// noticeable differences.
constexpr float nearestMixed = 2;
constexpr float farthestMixed = 16;

// How far beyond a colour its second entry is looked for, in distances from the nearest.
constexpr int farthestLean = 4;

// B. E. Bayer, An optimum method for two-level rendition of continuous-tone pictures, 1973.
constexpr int patternSide = 8;
constexpr std::array<std::uint8_t, patternSide * patternSide> pattern{
    0,  32, 8,  40, 2,  34, 10, 42, 48, 16, 56, 24, 50, 18, 58, 26, 12, 44, 4,  36, 14, 46,
    6,  38, 60, 28, 52, 20, 62, 30, 54, 22, 3,  35, 11, 43, 1,  33, 9,  41, 51, 19, 59, 27,
    49, 17, 57, 25, 15, 47, 7,  39, 13, 45, 5,  37, 63, 31, 55, 23, 61, 29, 53, 21};

int thresholdAt(int x, int y) {
    const int place = y % patternSide * patternSide + x % patternSide;
    return pattern[static_cast<std::size_t>(place)];
}

int component(Pixel color, int shift) { return static_cast<int>(color >> shift & 0xFF); }

constexpr float square(float value) { return value * value; }

int largestDifference(Pixel a, Pixel b) {
    return std::max({std::abs(component(a, 0) - component(b, 0)), std::abs(component(a, 8) - component(b, 8)),
                     std::abs(component(a, 16) - component(b, 16))});
}

// The pixels of one block.
struct Neighborhood {
    const Pixel* pixels;
    PixelRect area;

    Pixel at(int x, int y) const { return pixels[(y - area.y) * Image::blockWidth + (x - area.x)]; }

    bool isInside(int x, int y) const {
        return x >= area.x && y >= area.y && x < area.maxX() && y < area.maxY();
    }

    // From the first of two pixels that is in the block.
    int differenceAcross(Pixel color, int x, int y, int otherX, int otherY) const {
        if (isInside(x, y)) return largestDifference(color, at(x, y));
        return isInside(otherX, otherY) ? largestDifference(color, at(otherX, otherY)) : 0;
    }

    bool isGradient(int x, int y) const {
        const Pixel color = at(x, y);
        const auto isSmooth = [&](int neighborX, int neighborY) {
            return !isInside(neighborX, neighborY) ||
                   largestDifference(color, at(neighborX, neighborY)) <= steepestStep;
        };
        if (!isSmooth(x - 1, y) || !isSmooth(x + 1, y) || !isSmooth(x, y - 1) || !isSmooth(x, y + 1))
            return false;
        const int across = differenceAcross(color, x + reach, y, x - reach, y);
        const int down = differenceAcross(color, x, y + reach, x, y - reach);
        const auto isSlope = [](int difference) {
            return difference > 0 && difference <= steepestStep * reach;
        };
        return isSlope(across) || isSlope(down);
    }
};

class Mixer {
public:
    explicit Mixer(const Palette& palette) : palette(palette), nearest(palette) {}

    // The nearest entry or the one that is mixed with it: that one's share of the mixture decides, against a
    // threshold of 0 to 63.
    std::uint8_t mixed(Pixel color, std::uint8_t near, int threshold) {
        const Pixel nearColor = palette[near];
        const std::uint8_t far = secondOf(color, near);
        const Pixel farColor = palette[far];
        int along = 0;
        int whole = 0;
        for (int shift = 0; shift < 24; shift += 8) {
            const int step = component(farColor, shift) - component(nearColor, shift);
            along += step * (component(color, shift) - component(nearColor, shift));
            whole += step * step;
        }
        if (whole == 0 || along * static_cast<int>(pattern.size()) <= threshold * whole) return near;
        const float distance = squaredDistance(perceptualColor(nearColor), perceptualColor(farColor));
        return distance < square(nearestMixed * perceptualUnit) ||
                       distance > square(farthestMixed * perceptualUnit)
                   ? near
                   : far;
    }

private:
    std::uint8_t secondOf(Pixel color, std::uint8_t near) {
        Known& slot = known[(color * 2654435761u) >> (32 - hashBits)];
        if (slot.color != color) slot = {color, beyond(color, near)};
        return slot.far;
    }

    // The entry that the colour leans to, away from the nearest.
    std::uint8_t beyond(Pixel color, std::uint8_t near) const {
        std::uint8_t far = near;
        for (int times = 1; times <= farthestLean && far == near; times *= 2) {
            Pixel leaning = 0;
            for (int shift = 0; shift < 24; shift += 8) {
                const int value = component(color, shift);
                const int step = value - component(palette[near], shift);
                leaning |= static_cast<Pixel>(std::clamp(value + times * step, 0, 255)) << shift;
            }
            far = nearest.find(perceptualColor(leaning));
        }
        return far;
    }

    static constexpr int hashBits = 12;
    struct Known {
        Pixel color = 0xFFFFFFFF; // none
        std::uint8_t far = 0;
    };

    const Palette& palette;
    const NearestColor nearest;
    // The colours of a gradient come again row by row; of two that meet here the later one stays.
    std::vector<Known> known{std::size_t{1} << hashBits};
};

} // namespace

void ditherGradients(const Image& image, const FrameChange& change, const Palette& palette,
                     std::span<std::uint8_t> indices) {
    Mixer mixer(palette);
    std::size_t next = 0;
    for (const PixelRun& run : std::span(change.runs).first(change.runs.size() - change.healingRuns)) {
        const int column = run.x / Image::blockWidth;
        const int row = run.y / Image::blockHeight;
        const Neighborhood block{image.blockPixels(column, row), image.blockRect(column, row)};
        for (int x = run.x; x < run.x + run.length; ++x, ++next) {
            const Pixel color = change.colors[next];
            if (color == palette[indices[next]] || !block.isGradient(x, run.y)) continue;
            indices[next] = mixer.mixed(color, indices[next], thresholdAt(x, run.y));
        }
    }
}

} // namespace clipwren
