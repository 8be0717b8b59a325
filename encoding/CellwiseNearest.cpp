#include "encoding/CellwiseNearest.h"

#include "encoding/PerceptualColor.h"
#include "encoding/WideVectors.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <span>

namespace clipwren {

namespace {

// Distances are whole numbers in this part of a perceptual colour's unit: one step of red, green or blue is
// several of them everywhere.
constexpr int fineness = 4;

constexpr int side = 4;
constexpr int outerSide = 8;

// More are not explored: two megabytes of places, and candidates for no more.
constexpr std::size_t mostCells = 32'768;

Pixel withComponent(Pixel color, std::size_t component, int value) {
    return (color & ~(0xFFu << (8 * component))) | static_cast<Pixel>(value) << (8 * component);
}

// From the middle of the outer cell.
int offsetIn(Pixel color, std::size_t component) {
    return static_cast<int>(color >> (8 * component) & (outerSide - 1)) - outerSide / 2;
}

struct Vector {
    int lightness = 0;
    int first = 0;
    int second = 0;

    Vector& operator+=(const Vector& other) {
        lightness += other.lightness;
        first += other.first;
        second += other.second;
        return *this;
    }
    friend Vector operator*(int factor, const Vector& vector) {
        return {factor * vector.lightness, factor * vector.first, factor * vector.second};
    }
    friend int dot(const Vector& a, const Vector& b) {
        return a.lightness * b.lightness + a.first * b.first + a.second * b.second;
    }
};

// One step of so many from one colour to the other.
Vector stepBetween(const PerceptualColor& from, const PerceptualColor& to, int steps) {
    const auto part = [steps](float whole) {
        return static_cast<int>(std::lround(whole * fineness / static_cast<float>(steps)));
    };
    return {part(to.lightness - from.lightness), part(to.first - from.first), part(to.second - from.second)};
}

// How colours look in an outer cell.
struct Surroundings {
    explicit Surroundings(Pixel color) {
        constexpr Pixel inCell = 0x010101u * (outerSide - 1);
        const Pixel low = color & ~inCell & 0xFFFFFFu;
        const Pixel middleColor = low + 0x010101u * (outerSide / 2);
        const PerceptualColor place = perceptualColor(middleColor);
        middle = {static_cast<int>(place.lightness), static_cast<int>(place.first),
                  static_cast<int>(place.second)};
        for (std::size_t i = 0; i < 3; ++i) {
            const int least = static_cast<int>(low >> (8 * i) & 0xFF);
            steps[i] = stepBetween(perceptualColor(withComponent(middleColor, i, least)),
                                   perceptualColor(withComponent(middleColor, i, least + outerSide - 1)),
                                   outerSide - 1);
        }
    }

    // How far from the middle a colour of the cell can be at most, without the fineness.
    double reach() const {
        int farthest = 0;
        for (const int first : {-1, 1})
            for (const int second : {-1, 1}) {
                Vector corner = steps[0];
                corner += first * steps[1];
                corner += second * steps[2];
                farthest = std::max(farthest, dot(corner, corner));
            }
        return std::sqrt(static_cast<double>(farthest)) * 0.5 * outerSide / fineness;
    }

    Vector middle; // without the fineness
    // A step of blue, green and red.
    std::array<Vector, 3> steps;
};

// Whether one candidate can be nearer than the other so far from the middle in each component.
template <typename Candidate>
bool canBeat(const Candidate& candidate, const Candidate& other, int reach) {
    int difference = candidate.offset - other.offset;
    for (std::size_t i = 0; i < 3; ++i)
        difference -= reach * std::abs(candidate.slope[i] - other.slope[i]);
    return difference <= 0;
}

// Gives an entry those places of a cell at which it is nearer than all before. Its squared distance, less
// what is the same for all, is `offset` in the middle and changes by `slope`.
CLIPWREN_WIDE_VECTORS
void takePlaces(int offset, std::array<int, 3> slope, int entry, int* __restrict least,
                int* __restrict best) {
    for (int i = 0; i < side * side * side; ++i) {
        const int distance = offset + slope[2] * (i / (side * side) - side / 2) +
                             slope[1] * (i / side % side - side / 2) + slope[0] * (i % side - side / 2);
        best[i] = distance < least[i] ? entry : best[i];
        least[i] = distance < least[i] ? distance : least[i];
    }
}

// The squared distances of so many places from the middle, and the least of them.
CLIPWREN_WIDE_VECTORS
int measure(const int* lightness, const int* first, const int* second, std::size_t count,
            const Vector& middle, int* __restrict distances) {
    int least = std::numeric_limits<int>::max();
    for (std::size_t i = 0; i < count; ++i) {
        const int x = lightness[i] - middle.lightness;
        const int y = first[i] - middle.first;
        const int z = second[i] - middle.second;
        distances[i] = x * x + y * y + z * z;
        least = std::min(least, distances[i]);
    }
    return least;
}

} // namespace

CellwiseNearest::CellwiseNearest(const Palette& palette) : palette(palette), oneByOne(palette) {
    for (std::size_t i = 0; i < palette.size(); ++i) {
        const PerceptualColor place = perceptualColor(palette[i]);
        lightness[i] = static_cast<int>(place.lightness);
        first[i] = static_cast<int>(place.first);
        second[i] = static_cast<int>(place.second);
    }
}

std::uint8_t CellwiseNearest::findInUnknown(Pixel color) {
    if (nearest.size() > mostCells * placeCount) return oneByOne.find(perceptualColor(color));
    std::uint32_t& outer = outerCells[outerCellOf(color)];
    if (outer == unknown) outer = exploreOuter(color);
    const std::uint32_t cell = explore(color, outer);
    cells[outer + cellWithin(color)] = cell;
    return nearest[cell + placeWithin(color)];
}

std::uint32_t CellwiseNearest::exploreOuter(Pixel color) {
    const Surroundings around(color);
    std::array<int, largestPalette> distances; // without the fineness
    const int least = measure(lightness.data(), first.data(), second.data(), palette.size(), around.middle,
                              distances.data());
    const auto candidateAt = [&](std::size_t i) {
        Vector entry{fineness * (lightness[i] - around.middle.lightness),
                     fineness * (first[i] - around.middle.first),
                     fineness * (second[i] - around.middle.second)};
        if (outerCellOf(palette[i]) == outerCellOf(color)) {
            // Placed by the same steps as the colours that are looked for, it is exactly where its own is.
            entry = {};
            for (std::size_t j = 0; j < 3; ++j)
                entry += offsetIn(palette[i], j) * around.steps[j];
        }
        Candidate result{.offset = dot(entry, entry), .entry = static_cast<std::uint8_t>(i)};
        for (std::size_t j = 0; j < 3; ++j)
            result.slope[j] = -2 * dot(entry, around.steps[j]);
        return result;
    };
    const auto middlemost = candidateAt(
        static_cast<std::size_t>(std::find(distances.begin(), distances.end(), least) - distances.begin()));
    const double farthest = std::sqrt(static_cast<double>(least)) + 2 * around.reach();
    const auto limit = static_cast<int>(std::min(farthest * farthest, 2e9));
    for (std::size_t i = 0; i < palette.size(); ++i) {
        if (distances[i] > limit) continue;
        const Candidate candidate = candidateAt(i);
        if (canBeat(candidate, middlemost, outerSide / 2)) candidates.push_back(candidate);
    }
    candidateCounts.push_back(candidates.size());
    const auto result = static_cast<std::uint32_t>(cells.size());
    cells.resize(cells.size() + cellsInOuter);
    return result;
}

std::uint32_t CellwiseNearest::explore(Pixel color, std::uint32_t outer) {
    static_assert(placeCount == side * side * side);
    const std::size_t number = outer / cellsInOuter;
    const std::span<const Candidate> known(candidates.data() + candidateCounts[number - 1],
                                           candidates.data() + candidateCounts[number]);
    std::array<int, 3> middle; // of the cell, from that of the outer one
    for (std::size_t i = 0; i < 3; ++i)
        middle[i] = offsetIn(color, i) < 0 ? -side / 2 : side / 2;
    std::array<Candidate, largestPalette> moved;
    std::size_t middlemost = 0;
    for (std::size_t i = 0; i < known.size(); ++i) {
        moved[i] = known[i];
        for (std::size_t j = 0; j < 3; ++j)
            moved[i].offset += known[i].slope[j] * middle[j];
        if (moved[i].offset < moved[middlemost].offset) middlemost = i;
    }
    std::array<int, placeCount> least;
    std::array<int, placeCount> best{};
    least.fill(std::numeric_limits<int>::max());
    for (std::size_t i = 0; i < known.size(); ++i)
        if (canBeat(moved[i], moved[middlemost], side / 2))
            takePlaces(moved[i].offset, moved[i].slope, moved[i].entry, least.data(), best.data());
    const auto result = static_cast<std::uint32_t>(nearest.size());
    nearest.resize(nearest.size() + placeCount);
    std::transform(best.begin(), best.end(), nearest.end() - placeCount,
                   [](int entry) { return static_cast<std::uint8_t>(entry); });
    return result;
}

} // namespace clipwren
