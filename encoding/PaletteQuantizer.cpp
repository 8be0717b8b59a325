#include "encoding/PaletteQuantizer.h"

#include "encoding/NearestColor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>
#include <utility>

namespace clipwren {

namespace {

// Refining takes time by the sample, which is worth it for many pixels: a round for as many of them a sample.
constexpr double pixelsOfRefinement = 8;
constexpr double mostRefinements = 5;
constexpr int evenRefinements = 6;
// A colour that makes up that share of its cluster stands for it instead of the mean, where the farthest
// count.
constexpr float dominance = 0.4f;
// A colour with that many times the pixels of a mean entry is kept as it is.
constexpr double prevalence = 1.5;
constexpr double evenPrevalence = 1;

struct Sample {
    PerceptualColor place;
    Pixel color = 0;
    float weight = 0;
    std::uint8_t owner = 0; // a guess at the nearest place
};

using Axis = float PerceptualColor::*;
constexpr std::array<Axis, 3> axes{&PerceptualColor::lightness, &PerceptualColor::first,
                                   &PerceptualColor::second};

// Neighbouring samples of the array and how far they lie from their mean.
struct Cluster {
    std::size_t begin = 0;
    std::size_t end = 0;
    Axis widest = axes[0];
    float mean = 0;   // along the widest axis
    double error = 0; // sum of the weighted squared distances along it
};

Cluster measured(const std::vector<Sample>& samples, std::size_t begin, std::size_t end) {
    Cluster cluster{.begin = begin, .end = end};
    double weight = 0;
    std::array<double, 3> sum{};
    std::array<double, 3> squares{};
    for (std::size_t i = begin; i < end; ++i) {
        weight += samples[i].weight;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double value = samples[i].place.*axes[axis];
            sum[axis] += samples[i].weight * value;
            squares[axis] += samples[i].weight * value * value;
        }
    }
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double error = squares[axis] - sum[axis] * sum[axis] / weight;
        if (error <= cluster.error) continue;
        cluster.error = error;
        cluster.widest = axes[axis];
        cluster.mean = static_cast<float>(sum[axis] / weight);
    }
    return cluster;
}

// Cuts the cluster with the largest error again and again.
std::vector<Cluster> divided(std::vector<Sample>& samples, std::size_t limit) {
    const auto smallerError = [](const Cluster& a, const Cluster& b) { return a.error < b.error; };
    std::vector<Cluster> heap{measured(samples, 0, samples.size())};
    while (heap.size() < limit) {
        std::pop_heap(heap.begin(), heap.end(), smallerError);
        const Cluster cluster = heap.back();
        const auto first = samples.begin() + static_cast<std::ptrdiff_t>(cluster.begin);
        const auto last = samples.begin() + static_cast<std::ptrdiff_t>(cluster.end);
        const auto middle = std::partition(
            first, last, [&](const Sample& sample) { return sample.place.*cluster.widest < cluster.mean; });
        if (middle == first || middle == last) {
            std::push_heap(heap.begin(), heap.end(), smallerError);
            break;
        }
        const auto cut = static_cast<std::size_t>(middle - samples.begin());
        heap.back() = measured(samples, cluster.begin, cut);
        std::push_heap(heap.begin(), heap.end(), smallerError);
        heap.push_back(measured(samples, cut, cluster.end));
        std::push_heap(heap.begin(), heap.end(), smallerError);
    }
    return heap;
}

// The sums of one cluster's samples, and the heaviest of them.
struct Gathering {
    double weight = 0;
    std::array<double, 3> place{};
    std::array<double, 3> color{};
    Sample heaviest;
    bool heaviestStands = false; // for all, instead of the mean

    void add(const Sample& sample) {
        weight += sample.weight;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            place[axis] += sample.weight * static_cast<double>(sample.place.*axes[axis]);
            color[axis] += sample.weight * static_cast<double>((sample.color >> (8 * axis)) & 0xFF);
        }
        if (sample.weight > heaviest.weight) heaviest = sample;
    }

    PerceptualColor meanPlace() const {
        const auto mean = [&](std::size_t axis) {
            return static_cast<float>(std::round(place[axis] / weight));
        };
        return {mean(0), mean(1), mean(2)};
    }

    Pixel representative() const {
        if (heaviestStands) return heaviest.color;
        Pixel result = 0;
        for (std::size_t axis = 0; axis < 3; ++axis)
            result |= static_cast<Pixel>(std::lround(color[axis] / weight)) << (8 * axis);
        return result;
    }
};

bool isEmpty(const Gathering& gathering) { return gathering.weight == 0; }

// Moves every mean to the middle of the samples that are nearer to it than to any other or to a kept sample.
// Afterwards each sample's owner is known: a kept sample, or one of the means, which may be without any.
void refine(std::vector<Gathering>& gatherings, std::span<const Sample> kept, std::span<Sample> samples) {
    std::erase_if(gatherings, isEmpty);
    std::vector<PerceptualColor> places;
    for (const Sample& sample : kept)
        places.push_back(sample.place);
    for (const Gathering& gathering : gatherings)
        places.push_back(gathering.meanPlace());

    const NearestColor nearest(places);
    gatherings.assign(gatherings.size(), {});
    for (Sample& sample : samples) {
        if (sample.owner >= places.size()) sample.owner = 0;
        const float distance = squaredDistance(sample.place, places[sample.owner]);
        sample.owner = nearest.findWithin(sample.place, distance);
        if (sample.owner >= kept.size()) gatherings[sample.owner - kept.size()].add(sample);
    }
}

// The heaviest sample of a cluster stands for it where all are nearer to it, taken together, than to the
// mean.
void letNearerStand(std::vector<Gathering>& gatherings, std::size_t kept, std::span<const Sample> samples) {
    std::vector<PerceptualColor> means;
    means.reserve(gatherings.size());
    for (const Gathering& gathering : gatherings)
        means.push_back(isEmpty(gathering) ? PerceptualColor{} : gathering.meanPlace());
    std::vector<float> gains(gatherings.size());
    for (const Sample& sample : samples) {
        if (sample.owner < kept) continue;
        const std::size_t cluster = sample.owner - kept;
        gains[cluster] +=
            sample.weight * (std::sqrt(squaredDistance(sample.place, means[cluster])) -
                             std::sqrt(squaredDistance(sample.place, gatherings[cluster].heaviest.place)));
    }
    for (std::size_t i = 0; i < gatherings.size(); ++i)
        gatherings[i].heaviestStands = gains[i] >= 0;
}

void letDominantStand(std::vector<Gathering>& gatherings) {
    for (Gathering& gathering : gatherings)
        gathering.heaviestStands = gathering.heaviest.weight >= dominance * gathering.weight;
}

// With places after so many kept ones.
std::vector<Gathering> gathered(std::vector<Sample>& samples, std::size_t limit, std::size_t kept) {
    std::vector<Gathering> gatherings;
    for (const Cluster& cluster : divided(samples, limit)) {
        Gathering& gathering = gatherings.emplace_back();
        for (std::size_t i = cluster.begin; i < cluster.end; ++i) {
            gathering.add(samples[i]);
            samples[i].owner = static_cast<std::uint8_t>(kept + gatherings.size() - 1);
        }
    }
    return gatherings;
}

// Begins with the samples that lie farthest from all that were chosen before, which bounds the distance of
// the worst (T. Gonzalez, Clustering to minimize the maximum intercluster distance, 1985), heavy ones first.
std::vector<Gathering> farApart(std::span<const Sample> kept, std::span<const Sample> samples,
                                std::size_t limit) {
    std::vector<float> distances(samples.size(), std::numeric_limits<float>::max());
    const auto come = [&](const PerceptualColor& place) {
        for (std::size_t i = 0; i < samples.size(); ++i)
            distances[i] = std::min(distances[i], squaredDistance(place, samples[i].place));
    };
    for (const Sample& sample : kept)
        come(sample.place);
    std::vector<Gathering> result;
    while (result.size() < limit) {
        std::size_t worst = 0;
        for (std::size_t i = 1; i < samples.size(); ++i)
            if (distances[i] * samples[i].weight > distances[worst] * samples[worst].weight) worst = i;
        if (distances[worst] == 0) break;
        result.emplace_back().add(samples[worst]);
        come(samples[worst].place);
    }
    return result;
}

// Takes the samples out that have so many pixels that they earn an entry of their own, however near others
// are.
std::vector<Sample> takePrevalent(std::vector<Sample>& samples, std::size_t limit, double share) {
    double total = 0;
    for (const Sample& sample : samples)
        total += sample.weight;
    const double threshold = share * total / static_cast<double>(limit);
    const auto begin = std::stable_partition(samples.begin(), samples.end(),
                                             [&](const Sample& sample) { return sample.weight < threshold; });
    std::vector<Sample> prevalent(begin, samples.end());
    samples.erase(begin, samples.end());
    return prevalent;
}

std::vector<Sample> samplesOf(const std::vector<WeightedColor>& colors) {
    std::vector<Sample> samples;
    samples.reserve(colors.size());
    for (const WeightedColor& color : colors)
        samples.push_back({color.place, color.color, color.weight});
    return samples;
}

// A palette that grows.
class Selection {
public:
    // Unless the colour is there already, or one that is so near.
    void add(Pixel color, float apart) {
        const PerceptualColor place = perceptualColor(color);
        for (std::size_t i = 0; i < palette.size(); ++i)
            if (palette[i] == color || squaredDistance(places[i], place) < apart * apart) return;
        palette.push_back(color);
        places.push_back(place);
    }

    Palette palette;

private:
    std::vector<PerceptualColor> places;
};

Palette heaviestFirst(std::vector<Sample> prevalent, std::vector<Gathering> gatherings, float apart) {
    const auto heavier = [](const auto& a, const auto& b) { return a.weight > b.weight; };
    std::stable_sort(prevalent.begin(), prevalent.end(), heavier);
    std::stable_sort(gatherings.begin(), gatherings.end(), heavier);
    Selection selection;
    for (const Sample& sample : prevalent)
        selection.add(sample.color, 0);
    for (const Gathering& gathering : gatherings)
        if (!isEmpty(gathering)) selection.add(gathering.representative(), apart * perceptualUnit);
    return std::move(selection.palette);
}

} // namespace

Palette quantize(const std::vector<WeightedColor>& colors, std::size_t limit, float apart) {
    std::vector<Sample> samples = samplesOf(colors);
    std::vector<Sample> prevalent = takePrevalent(samples, limit, prevalence);
    std::vector<Gathering> gatherings;
    if (!samples.empty() && prevalent.size() < limit)
        gatherings = gathered(samples, limit - prevalent.size(), prevalent.size());
    double weight = 0;
    for (const WeightedColor& color : colors)
        weight += color.weight;
    const auto rounds = static_cast<std::size_t>(std::clamp(
        weight / (pixelsOfRefinement * static_cast<double>(samples.size() + 1)), 1.0, mostRefinements));
    for (std::size_t i = 0; i < rounds; ++i)
        refine(gatherings, prevalent, samples);
    letNearerStand(gatherings, prevalent.size(), samples);
    return heaviestFirst(std::move(prevalent), std::move(gatherings), apart);
}

Palette quantizeEvenly(const std::vector<WeightedColor>& colors, std::size_t limit) {
    std::vector<Sample> samples = samplesOf(colors);
    std::vector<Sample> prevalent = takePrevalent(samples, limit, evenPrevalence);
    std::vector<Gathering> gatherings;
    if (!samples.empty()) gatherings = farApart(prevalent, samples, limit - prevalent.size());
    for (int i = 0; i < evenRefinements; ++i)
        refine(gatherings, prevalent, samples);
    letDominantStand(gatherings);
    return heaviestFirst(std::move(prevalent), std::move(gatherings), 0);
}

} // namespace clipwren
