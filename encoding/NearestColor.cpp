#include "encoding/NearestColor.h"

#include "encoding/WideVectors.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

namespace clipwren {

namespace {

constexpr int darkest = -640; // of all colours
constexpr int shelfHeight = 8;

} // namespace

NearestColor::NearestColor(const Palette& palette) : NearestColor(placesOf(palette)) {}

NearestColor::NearestColor(std::span<const PerceptualColor> places) {
    std::vector<std::int32_t> order(places.size());
    std::iota(order.begin(), order.end(), 0);
    const auto placeOf = [&](std::int32_t number) { return places[static_cast<std::size_t>(number)]; };
    std::stable_sort(order.begin(), order.end(), [&](std::int32_t a, std::int32_t b) {
        return placeOf(a).lightness < placeOf(b).lightness;
    });
    order.resize(numbers.size(), order.back());
    shelves.fill(static_cast<std::uint16_t>(places.size()));
    for (std::size_t i = order.size(); i-- > 0;) {
        const PerceptualColor& place = placeOf(order[i]);
        lightness[i] = place.lightness;
        first[i] = place.first;
        second[i] = place.second;
        numbers[i] = order[i];
        if (i < places.size())
            shelves[shelfOf(static_cast<int>(place.lightness))] = static_cast<std::uint16_t>(i);
    }
    for (std::size_t i = shelves.size() - 1; i-- > 0;)
        shelves[i] = std::min(shelves[i], shelves[i + 1]);
}

std::size_t NearestColor::shelfOf(int lightness) {
    return static_cast<std::size_t>(std::clamp((lightness - darkest) / shelfHeight, 0, shelfCount - 1));
}

// The hottest loop of the encoder. Distance and number in one, so that the search is a plain minimum, which
// compilers vectorise.
CLIPWREN_WIDE_VECTORS
std::int32_t NearestColor::findInGroups(const PerceptualColor& color, std::size_t begin,
                                        std::size_t end) const {
    std::int32_t least = std::numeric_limits<std::int32_t>::max();
    for (std::size_t i = begin * groupSize; i < end * groupSize; ++i) {
        const float x = lightness[i] - color.lightness;
        const float y = first[i] - color.first;
        const float z = second[i] - color.second;
        const auto distance = static_cast<std::int32_t>(x * x + y * y + z * z);
        least = std::min(least, distance << numberBits | numbers[i]);
    }
    return least;
}

std::uint8_t NearestColor::find(const PerceptualColor& color) const {
    const std::size_t place = shelves[shelfOf(static_cast<int>(color.lightness))];
    const std::size_t group = std::min(place / groupSize, groupCount - 1);
    return findWithin(color, static_cast<float>(findInGroups(color, group, group + 1) >> numberBits));
}

// How far the nearest can be at most tells how much lighter or darker it can be.
std::uint8_t NearestColor::findWithin(const PerceptualColor& color, float squaredDistance) const {
    const int reach = static_cast<int>(std::sqrt(squaredDistance)) + 1;
    const int middle = static_cast<int>(color.lightness);
    const std::size_t begin = shelves[shelfOf(middle - reach)] / groupSize;
    const std::size_t end = (shelves[shelfOf(middle + reach) + 1] + groupSize - 1) / groupSize;
    return static_cast<std::uint8_t>(findInGroups(color, begin, end) & (largestPalette - 1));
}

} // namespace clipwren
