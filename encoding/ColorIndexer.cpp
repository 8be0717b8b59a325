#include "encoding/ColorIndexer.h"

#include "encoding/CellwiseNearest.h"
#include "encoding/ColorCensus.h"
#include "encoding/ColorHistogram.h"
#include "encoding/NearestColor.h"
#include "encoding/PaletteIndex.h"
#include "encoding/PaletteQuantizer.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace clipwren {

namespace {

// As many colours are looked at one by one; beyond that near colours are taken together.
constexpr std::size_t censusLimit = 8192;
// Of more, the rare ones are taken together with near ones when a palette is chosen: it is hardly worse, and
// found much sooner.
constexpr std::size_t mostSamples = 4096;
constexpr std::uint32_t rare = 8; // pixels
// What the shared palette may get wrong: in any pixel, and in all pixels together for each byte that it
// saves. In just noticeable differences.
constexpr double largestMisfit = 2.8;
constexpr double largestMisfitOfColor = 300; // all its pixels together: large flat areas are exact
constexpr double worthOfByte = 1.1;
// Entries that are nearer to each other would cost bytes where everything moves. In just noticeable
// differences.
constexpr float coarsestStep = 0.6f;

std::vector<std::uint8_t> exactIndices(const ColorCensus& census) {
    return {census.entryNumbers().begin(), census.entryNumbers().end()};
}

Palette exactPalette(const ColorCensus& census) {
    Palette palette;
    for (const ColorCensus::Entry& entry : census.entries())
        palette.push_back(entry.color);
    return palette;
}

std::vector<std::uint8_t> entryIndices(const ColorCensus& census, std::span<const std::uint8_t> byEntry) {
    std::vector<std::uint8_t> indices(census.entryNumbers().size());
    std::transform(census.entryNumbers().begin(), census.entryNumbers().end(), indices.begin(),
                   [&](std::uint16_t number) { return byEntry[number]; });
    return indices;
}

std::vector<WeightedColor> weightedColors(const ColorCensus& census) {
    std::vector<WeightedColor> result;
    result.reserve(census.entries().size());
    for (const ColorCensus::Entry& entry : census.entries())
        result.emplace_back(entry.color, static_cast<float>(entry.count));
    return result;
}

std::vector<WeightedColor> fewerColors(const ColorCensus& census) {
    ColorHistogram histogram;
    for (const ColorCensus::Entry& entry : census.entries())
        if (entry.count < rare)
            histogram.addNear(entry.color, entry.count);
        else
            histogram.addExact(entry.color, entry.count);
    return histogram.summary();
}

// `colors` are the census's.
void takeNearest(IndexedColors& result, const ColorCensus& census, std::span<const WeightedColor> colors) {
    const std::vector<PerceptualColor> places = placesOf(result.palette);
    const NearestColor nearest(places);
    std::vector<std::uint8_t> byEntry;
    byEntry.reserve(colors.size());
    float farthest = 0;
    for (const WeightedColor& color : colors) {
        byEntry.push_back(nearest.find(color.place));
        farthest = std::max(farthest, squaredDistance(color.place, places[byEntry.back()]));
    }
    result.indices = entryIndices(census, byEntry);
    result.allNear = farthest <= perceptualUnit * perceptualUnit;
}

std::vector<std::uint8_t> nearestIndices(std::span<const Pixel> colors, const Palette& palette) {
    CellwiseNearest nearest(palette);
    std::vector<std::uint8_t> indices(colors.size());
    std::transform(colors.begin(), colors.end(), indices.begin(),
                   [&](Pixel color) { return nearest.find(color); });
    return indices;
}

ColorHistogram fineHistogram(std::span<const Pixel> colors) {
    ColorHistogram histogram(6);
    histogram.addNeighbors(colors);
    return histogram;
}

// Every other part of the pixels is enough here.
ColorHistogram coarseHistogram(std::span<const Pixel> colors) {
    constexpr std::size_t part = Image::blockWidth;
    ColorHistogram histogram(5);
    for (std::size_t i = 0; i < colors.size(); i += 2 * part)
        histogram.addNeighbors(colors.subspan(i, std::min(part, colors.size() - i)));
    return histogram;
}

double tableBytes(std::size_t colors) { return 3.0 * static_cast<double>(std::bit_ceil(colors + 1)); }

} // namespace

ColorIndexer::ColorIndexer(const Palette& shared)
    : sharedIndex(shared, std::uint8_t{0}),
      sharedPlaces(placesOf(std::span(shared).subspan(1))),
      sharedNearest(sharedPlaces) {}

ColorIndexer::SharedEntry ColorIndexer::sharedEntry(Pixel color) const {
    if (const auto exact = sharedIndex.find(color)) return {*exact, 0};
    const PerceptualColor place = perceptualColor(color);
    const std::uint8_t nearest = sharedNearest.find(place);
    return {static_cast<std::uint8_t>(1 + nearest),
            std::sqrt(squaredDistance(place, sharedPlaces[nearest])) / perceptualUnit};
}

std::optional<std::vector<std::uint8_t>> ColorIndexer::sharedEntries(const ColorCensus& census,
                                                                     double savedBytes) const {
    const double allowed = worthOfByte * savedBytes;
    double misfit = 0;
    std::vector<std::uint8_t> result;
    for (const ColorCensus::Entry& color : census.entries()) {
        const SharedEntry entry = sharedEntry(color.color);
        result.push_back(entry.index);
        misfit += entry.distance * color.count;
        if (entry.distance > largestMisfit || entry.distance * color.count > largestMisfitOfColor ||
            misfit > allowed)
            return std::nullopt;
    }
    return result;
}

IndexedColors ColorIndexer::index(std::span<const Pixel> colors, std::size_t limit,
                                  Precision precision) const {
    const float apart = precision == Precision::fine ? 0 : coarsestStep;
    IndexedColors result;
    if (const auto census = ColorCensus::take(colors, censusLimit)) {
        const bool fitsOwnTable = census->entries().size() <= limit;
        if (const auto byEntry =
                sharedEntries(*census, tableBytes(fitsOwnTable ? census->entries().size() : limit))) {
            result.indices = entryIndices(*census, *byEntry);
        } else if (fitsOwnTable) {
            result.palette = exactPalette(*census);
            result.indices = exactIndices(*census);
            result.allNear = true;
        } else {
            const std::vector<WeightedColor> weighted = weightedColors(*census);
            result.palette = weighted.size() > mostSamples ? quantize(fewerColors(*census), limit, apart)
                                                           : quantize(weighted, limit, apart);
            takeNearest(result, *census, weighted);
        }
    } else {
        result.manyColors = true;
        const ColorHistogram histogram =
            precision == Precision::fine ? fineHistogram(colors) : coarseHistogram(colors);
        result.palette = quantize(histogram.summary(), limit, apart);
        result.indices = nearestIndices(colors, result.palette);
    }
    return result;
}

} // namespace clipwren
