#include "encoding/GradientDither.h"

#include "encoding/Gradients.h"
#include "encoding/PerceptualColor.h"
#include "encoding/WideVectors.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

namespace clipwren {

namespace {

// Nearer to each other two entries show no bands, farther apart they would be seen as dots. In just
// noticeable differences.
constexpr float nearestMixed = 2;
constexpr float farthestMixed = 16;

// What the dots of a mixture are worth against its being off, both as squared distances.
constexpr float worthOfDots = 0.32f;
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

constexpr float square(float value) { return value * value; }

PerceptualColor difference(const PerceptualColor& a, const PerceptualColor& b) {
    return {a.lightness - b.lightness, a.first - b.first, a.second - b.second};
}

float squared(const PerceptualColor& a) { return square(a.lightness) + square(a.first) + square(a.second); }

// The entries that one can be mixed with: how far away they lie, and in which direction.
struct Partners {
    // A place that is left is like the entry itself: nothing is won by mixing it.
    std::array<std::uint8_t, mostPartners> entries{};
    std::array<float, mostPartners> lightness{};
    std::array<float, mostPartners> first{};
    std::array<float, mostPartners> second{};
    std::array<float, mostPartners> squaredLengths = filled(1);

    void set(std::size_t i, std::uint8_t entry, const PerceptualColor& step) {
        entries[i] = entry;
        lightness[i] = step.lightness;
        first[i] = step.first;
        second[i] = step.second;
        squaredLengths[i] = squared(step);
    }

private:
    static std::array<float, mostPartners> filled(float value) {
        std::array<float, mostPartners> result;
        result.fill(value);
        return result;
    }
};

struct Mixtures {
    std::array<float, mostPartners> shares; // of the partner
    std::array<float, mostPartners> costs;
};

// The mixtures with each partner that come nearest to what is wanted, from the entry's own place.
CLIPWREN_WIDE_VECTORS
void mix(const Partners& partners, PerceptualColor wanted, Mixtures& __restrict result) {
    for (std::size_t i = 0; i < mostPartners; ++i) {
        const float x = partners.lightness[i];
        const float y = partners.first[i];
        const float z = partners.second[i];
        const float along = x * wanted.lightness + y * wanted.first + z * wanted.second;
        const float share = std::min(std::max(along / partners.squaredLengths[i], 0.0f), 0.5f);
        result.shares[i] = share;
        result.costs[i] = square(wanted.lightness - share * x) + square(wanted.first - share * y) +
                          square(wanted.second - share * z) +
                          worthOfDots * share * (1 - share) * partners.squaredLengths[i];
    }
}

class Mixer {
public:
    explicit Mixer(const Palette& palette) : places(placesOf(palette)), partners(palette.size()) {}

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
        const Partners& partners = partnersOf(near);
        Mixtures mixtures;
        mix(partners, wanted, mixtures);
        const auto cheapest = static_cast<std::size_t>(
            std::min_element(mixtures.costs.begin(), mixtures.costs.end()) - mixtures.costs.begin());
        Mixture result{.color = color, .far = near};
        if (mixtures.costs[cheapest] >= squared(wanted)) return result;
        result.far = partners.entries[cheapest];
        if (partners.squaredLengths[cheapest] >= square(nearestMixed * perceptualUnit))
            result.share = static_cast<std::uint8_t>(
                std::lround(mixtures.shares[cheapest] * static_cast<float>(pattern.size())));
        return result;
    }

    // The nearest others, none of which is equal to the entry.
    const Partners& partnersOf(std::uint8_t entry) {
        std::unique_ptr<const Partners>& found = partners[entry];
        if (found) return *found;
        std::vector<std::pair<float, std::uint8_t>> others;
        for (std::size_t i = 0; i < places.size(); ++i) {
            const float distance = squaredDistance(places[i], places[entry]);
            if (distance > 0 && distance <= square(farthestMixed * perceptualUnit))
                others.emplace_back(distance, static_cast<std::uint8_t>(i));
        }
        const std::size_t count = std::min(others.size(), mostPartners);
        std::partial_sort(others.begin(), others.begin() + static_cast<std::ptrdiff_t>(count), others.end());
        auto result = std::make_unique<Partners>();
        for (std::size_t i = 0; i < count; ++i)
            result->set(i, others[i].second, difference(places[others[i].second], places[entry]));
        found = std::move(result);
        return *found;
    }

    static constexpr int hashBits = 12;

    std::vector<PerceptualColor> places;
    std::vector<std::unique_ptr<const Partners>> partners; // once they are asked for
    // The colours of a gradient come again row by row; of two that meet here the later one stays.
    std::vector<Mixture> known{std::size_t{1} << hashBits};
};

} // namespace

void ditherGradients(const Image& image, const FrameChange& change, const Palette& palette,
                     std::span<std::uint8_t> indices) {
    Mixer mixer(palette);
    Gradients gradients(image);
    std::size_t next = 0;
    for (const PixelRun& run : std::span(change.runs).first(change.runs.size() - change.healingRuns)) {
        for (int x = run.x; x < run.x + run.length; ++x, ++next) {
            const Pixel color = change.colors[next];
            if (color == palette[indices[next]] || !gradients.contain(x, run.y)) continue;
            indices[next] = mixer.mixed(color, indices[next], thresholdAt(x, run.y));
        }
    }
}

} // namespace clipwren
