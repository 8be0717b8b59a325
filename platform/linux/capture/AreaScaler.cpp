#include "platform/linux/capture/AreaScaler.h"

#include <algorithm>
#include <cstring>
#include <utility>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace clipwren {

namespace {

constexpr int rowShift = 7;     // 255 << 7 fits a signed 16-bit number,
constexpr int columnShift = 14; // and that << 14 a signed 32-bit number.
constexpr int half = 1 << (rowShift + columnShift - 1);

// The rows of a picture are bytes here: every channel is treated alike.
const std::uint8_t* bytes(const PixelView& view, int y, int left) {
    return reinterpret_cast<const std::uint8_t*>(view.row(y) + left);
}

// Rows that will be read soon. Those of a narrow part lie far apart, where the processor does not expect
// them.
void prefetch([[maybe_unused]] const PixelView& view, [[maybe_unused]] const PixelRect& part) {
#if defined(__SSE2__)
    constexpr int pixelsInLine = 64 / sizeof(Pixel);
    for (int y = part.y; y < part.maxY(); ++y)
        for (int x = part.x; x < part.maxX(); x += pixelsInLine)
            _mm_prefetch(reinterpret_cast<const char*>(view.row(y) + x), _MM_HINT_T0);
#endif
}

} // namespace

AreaScaler::Axis::Axis(int source, int destination, int unit) {
    // Counted in parts of a source pixel, `destination` parts each, destination pixel i covers the parts from
    // i * source to (i + 1) * source: whole numbers all.
    for (std::int64_t i = 0; i < destination; ++i) {
        const std::int64_t first = i * source / destination;
        const std::int64_t end = ((i + 1) * source + destination - 1) / destination;
        spans.push_back({.first = static_cast<int>(first), .count = static_cast<int>(end - first)});
        taps = std::max(taps, spans.back().count);
    }
    taps += taps % 2;
    weights.resize(spans.size() * static_cast<std::size_t>(taps));
    for (std::int64_t i = 0; i < destination; ++i) {
        const std::int64_t begin = i * source;
        // Rounding the running sum rather than each weight makes them add up to the unit.
        std::int64_t given = 0;
        const Span& span = spans[static_cast<std::size_t>(i)];
        for (int tap = 0; tap < span.count; ++tap) {
            const std::int64_t pixelEnd = std::int64_t{span.first + tap + 1} * destination;
            const std::int64_t covered = std::min(pixelEnd, begin + source) - begin;
            const std::int64_t sum = (2 * covered * unit + source) / (2 * std::int64_t{source});
            weights[static_cast<std::size_t>(i * taps + tap)] = static_cast<std::int16_t>(sum - given);
            given = sum;
        }
    }
}

AreaScaler::AreaScaler(PixelSize source, PixelSize destination)
    : destination(destination),
      halves(source.width == 2 * destination.width && source.height == 2 * destination.height),
      columns(source.width, destination.width, 1 << columnShift),
      rows(source.height, destination.height, 1 << rowShift),
      averages(static_cast<std::size_t>(source.width + columns.taps) * 4) {}

PixelRect AreaScaler::affected(const PixelRect& rect) const {
    const auto range = [](const Axis& axis, int begin, int end) {
        const auto& spans = axis.spans;
        const auto low = std::partition_point(spans.begin(), spans.end(), [&](const Axis::Span& span) {
            return span.first + span.count <= begin;
        });
        const auto high =
            std::partition_point(low, spans.end(), [&](const Axis::Span& span) { return span.first < end; });
        return std::pair{static_cast<int>(low - spans.begin()), static_cast<int>(high - spans.begin())};
    };
    const auto [left, right] = range(columns, rect.x, rect.maxX());
    const auto [top, bottom] = range(rows, rect.y, rect.maxY());
    return {left, top, right - left, bottom - top};
}

void AreaScaler::scale(const PixelView& view, const PixelRect& part, Pixel* output, std::ptrdiff_t stride) {
    if (part.isEmpty()) return;
    if (halves) return halve(view, part, output, stride);
    const int left = columns.span(part.x).first;
    const int right = columns.span(part.maxX() - 1).first + columns.span(part.maxX() - 1).count;
    for (int y = part.y; y < part.maxY(); ++y) {
        if (y + 1 < part.maxY()) {
            const int begin = rows.span(y).first + rows.span(y).count;
            const int end = rows.span(y + 1).first + rows.span(y + 1).count;
            prefetch(view, {left, begin, right - left, end - begin});
        }
        averageRows(view, y, left, right);
        averageColumns(part.x, part.maxX(), left, output + (y - part.y) * stride);
    }
}

// What the weights below come down to: the sum of four pixels, and two for rounding, divided by four.
void AreaScaler::halve(const PixelView& view, const PixelRect& part, Pixel* output,
                       std::ptrdiff_t stride) const {
    for (int y = part.y; y < part.maxY(); ++y) {
        const Pixel* upper = view.row(2 * y);
        const Pixel* lower = view.row(2 * y + 1);
        Pixel* out = output + (y - part.y) * stride;
        int x = part.x;
        if (y + 1 < part.maxY()) prefetch(view, {2 * part.x, 2 * y + 2, 2 * part.width, 2});
#if defined(__SSE2__)
        const __m128i zero = _mm_setzero_si128();
        for (; x + 1 < part.maxX(); x += 2) {
            const __m128i above = _mm_loadu_si128(reinterpret_cast<const __m128i*>(upper + 2 * x));
            const __m128i below = _mm_loadu_si128(reinterpret_cast<const __m128i*>(lower + 2 * x));
            const __m128i first =
                _mm_add_epi16(_mm_unpacklo_epi8(above, zero), _mm_unpacklo_epi8(below, zero));
            const __m128i second =
                _mm_add_epi16(_mm_unpackhi_epi8(above, zero), _mm_unpackhi_epi8(below, zero));
            const __m128i sum =
                _mm_add_epi16(_mm_unpacklo_epi64(first, second), _mm_unpackhi_epi64(first, second));
            const __m128i mean = _mm_srli_epi16(_mm_add_epi16(sum, _mm_set1_epi16(2)), 2);
            _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(mean, zero));
            out += 2;
        }
#endif
        for (; x < part.maxX(); ++x) {
            Pixel result = 0;
            for (int shift = 0; shift < 32; shift += 8) {
                const auto at = [&](const Pixel* row, int i) { return row[2 * x + i] >> shift & 0xFF; };
                result |= (at(upper, 0) + at(upper, 1) + at(lower, 0) + at(lower, 1) + 2) / 4 << shift;
            }
            *out++ = result;
        }
    }
}

// The rows first: that is one long loop over bytes, which compilers turn into vector code by themselves.
void AreaScaler::averageRows(const PixelView& view, int row, int left, int right) {
    const Axis::Span& span = rows.span(row);
    const std::int16_t* weight = rows.weightsOf(row);
    const int count = (right - left) * 4;
    std::int16_t* sums = averages.data();
    for (int i = 0; i < span.count; i += 2) {
        // Two rows at a time; an odd last one is paired with itself and the weight of nothing.
        const std::uint8_t* upper = bytes(view, span.first + i, left);
        const std::uint8_t* lower = bytes(view, span.first + std::min(i + 1, span.count - 1), left);
        const int upperWeight = weight[i];
        const int lowerWeight = weight[i + 1];
        if (i == 0)
            for (int x = 0; x < count; ++x)
                sums[x] = static_cast<std::int16_t>(upper[x] * upperWeight + lower[x] * lowerWeight);
        else
            for (int x = 0; x < count; ++x)
                sums[x] =
                    static_cast<std::int16_t>(sums[x] + upper[x] * upperWeight + lower[x] * lowerWeight);
    }
}

void AreaScaler::averageColumns(int begin, int end, int left, Pixel* output) const {
    const auto pixelsOf = [&](int x) { return averages.data() + (columns.span(x).first - left) * 4; };
#if defined(__SSE2__)
    // One instruction multiplies the four channels of two pixels with their weights and adds the pairs.
    const auto sumOf = [&](int x, int taps) {
        const std::int16_t* pixel = pixelsOf(x);
        const std::int16_t* weight = columns.weightsOf(x);
        __m128i sum = _mm_set1_epi32(half);
        for (int i = 0; i < taps; i += 2) {
            int pair;
            std::memcpy(&pair, weight + i, sizeof pair);
            const __m128i two = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixel + i * 4));
            const __m128i interleaved = _mm_unpacklo_epi16(two, _mm_unpackhi_epi64(two, two));
            sum = _mm_add_epi32(sum, _mm_madd_epi16(interleaved, _mm_set1_epi32(pair)));
        }
        return _mm_srli_epi32(sum, rowShift + columnShift);
    };
    const auto sumAll = [&](int taps) {
        int x = begin;
        for (; x + 1 < end; x += 2) {
            const __m128i two = _mm_packs_epi32(sumOf(x, taps), sumOf(x + 1, taps));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(output + x - begin), _mm_packus_epi16(two, two));
        }
        if (x < end) {
            const __m128i one = _mm_packs_epi32(sumOf(x, taps), _mm_setzero_si128());
            output[x - begin] = static_cast<Pixel>(_mm_cvtsi128_si32(_mm_packus_epi16(one, one)));
        }
    };
    // The usual ones without an inner loop.
    if (columns.taps == 2)
        sumAll(2);
    else if (columns.taps == 4)
        sumAll(4);
    else
        sumAll(columns.taps);
#else
    for (int x = begin; x < end; ++x) {
        const std::int16_t* pixel = pixelsOf(x);
        const std::int16_t* weight = columns.weightsOf(x);
        std::int32_t sum[4] = {half, half, half, half};
        for (int i = 0; i < columns.taps; ++i)
            for (int channel = 0; channel < 4; ++channel)
                sum[channel] += pixel[i * 4 + channel] * weight[i];
        Pixel result = 0;
        for (int channel = 3; channel >= 0; --channel)
            result = result << 8 | static_cast<Pixel>(sum[channel] >> (rowShift + columnShift));
        output[x - begin] = result;
    }
#endif
}

} // namespace clipwren
