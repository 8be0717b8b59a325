#include "encoding/GradientDither.h"

#include "encoding/PerceptualColor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <utility>
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

// What the dots of a mixture are worth against its being off, both as squared distances.
constexpr float worthOfDots = 0.3f;
// So many entries around the nearest are tried.
constexpr std::size_t mostPartners = 16;

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
    explicit Mixer(const Palette& palette) : palette(palette), neighborhoods(palette.size()) {
        for (const Pixel color : palette)
            places.push_back(perceptualColor(color));
    }

    // The nearest entry or the one that is mixed with it: that one's share of the mixture decides, against a
    // threshold of 0 to 63.
    std::uint8_t mixed(Pixel color, std::uint8_t near, int threshold) {
        Mixture& slot = known[(color * 2654435761u) >> (32 - hashBits)];
        if (slot.color != color) slot = mixture(color, near);
        return threshold < slot.share ? slot.far : near;
    }

private:
    struct Mixture {
        Pixel color = 0xFFFFFFFF; // none
        std::uint8_t far = 0;
        std::uint8_t share = 0; // of the far one, in parts of the pattern
    };

    // Of those mixtures of the nearest entry and another whose mean comes near the colour, the one with the
    // least conspicuous dots.
    Mixture mixture(Pixel color, std::uint8_t near) {
        const PerceptualColor wanted = difference(perceptualColor(color), places[near]);
        float best = squared(wanted);
        Mixture result{.color = color, .far = near};
        for (const std::uint8_t entry : neighborsOf(near)) {
            const PerceptualColor step = difference(places[entry], places[near]);
            const float length = squared(step);
            const float share = std::clamp(dot(step, wanted) / length, 0.0f, 0.5f);
            const PerceptualColor rest{wanted.lightness - share * step.lightness,
                                       wanted.first - share * step.first,
                                       wanted.second - share * step.second};
            const float cost = squared(rest) + worthOfDots * share * (1 - share) * length;
            if (cost >= best) continue;
            best = cost;
            result.far = entry;
            result.share =
                length < square(nearestMixed * perceptualUnit)
                    ? std::uint8_t{0}
                    : static_cast<std::uint8_t>(std::lround(share * static_cast<float>(pattern.size())));
        }
        return result;
    }

    // The nearest others, none of which is equal to the entry.
    const std::vector<std::uint8_t>& neighborsOf(std::uint8_t entry) {
        std::optional<std::vector<std::uint8_t>>& found = neighborhoods[entry];
        if (found) return *found;
        std::vector<std::uint8_t>& result = found.emplace();
        std::vector<std::pair<float, std::uint8_t>> others;
        for (std::size_t i = 0; i < places.size(); ++i) {
            const float distance = squaredDistance(places[i], places[entry]);
            if (distance > 0 && distance <= square(farthestMixed * perceptualUnit))
                others.emplace_back(distance, static_cast<std::uint8_t>(i));
        }
        const std::size_t count = std::min(others.size(), mostPartners);
        std::partial_sort(others.begin(), others.begin() + static_cast<std::ptrdiff_t>(count), others.end());
        for (std::size_t i = 0; i < count; ++i)
            result.push_back(others[i].second);
        return result;
    }

    static PerceptualColor difference(const PerceptualColor& a, const PerceptualColor& b) {
        return {a.lightness - b.lightness, a.first - b.first, a.second - b.second};
    }
    static float dot(const PerceptualColor& a, const PerceptualColor& b) {
        return a.lightness * b.lightness + a.first * b.first + a.second * b.second;
    }
    static float squared(const PerceptualColor& a) { return dot(a, a); }

    static constexpr int hashBits = 12;

    const Palette& palette;
    std::vector<PerceptualColor> places;
    std::vector<std::optional<std::vector<std::uint8_t>>> neighborhoods; // once they are asked for
    // The colours of a gradient come again row by row; of two that meet here the later one stays.
    std::vector<Mixture> known{std::size_t{1} << hashBits};
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
