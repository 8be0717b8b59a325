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

} // namespace

AreaScaler::Axis::Axis(int source, int destination, int unit) {
    spans.reserve(static_cast<std::size_t>(destination));
    // Counted in parts of a source pixel, `destination` parts each, destination pixel i covers the parts from
    // i * source to (i + 1) * source: whole numbers all.
    for (std::int64_t i = 0; i < destination; ++i) {
        const std::int64_t begin = i * source;
        const std::int64_t end = begin + source;
        Span span{.first = static_cast<int>(begin / destination), .weights = weights.size()};
        // Rounding the running sum rather than each weight makes them add up to the unit.
        std::int64_t given = 0;
        for (std::int64_t j = span.first; j * destination < end; ++j) {
            const std::int64_t covered = std::min((j + 1) * destination, end) - begin;
            const std::int64_t sum = (2 * covered * unit + source) / (2 * std::int64_t{source});
            weights.push_back(static_cast<std::int16_t>(sum - given));
            given = sum;
            ++span.count;
        }
        if (span.count % 2 != 0) weights.push_back(0);
        spans.push_back(span);
    }
}

AreaScaler::AreaScaler(PixelSize source, PixelSize destination)
    : destination(destination),
      columns(source.width, destination.width, 1 << columnShift),
      rows(source.height, destination.height, 1 << rowShift),
      averages((static_cast<std::size_t>(source.width) + 1) * 4) {}

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

void AreaScaler::scale(const PixelView& view, const PixelRect& rect, Pixel* output, std::ptrdiff_t stride) {
    const PixelRect part = rect.intersection({0, 0, destination.width, destination.height});
    if (part.isEmpty()) return;
    const Axis::Span& first = columns.spans[static_cast<std::size_t>(part.x)];
    const Axis::Span& last = columns.spans[static_cast<std::size_t>(part.maxX() - 1)];
    for (int y = part.y; y < part.maxY(); ++y) {
        averageRows(view, y, first.first, last.first + last.count);
        averageColumns(part.x, part.maxX(), first.first, output + y * stride);
    }
}

// The rows first: that is one long loop over bytes, which compilers turn into vector code by themselves.
void AreaScaler::averageRows(const PixelView& view, int row, int left, int right) {
    const Axis::Span& span = rows.spans[static_cast<std::size_t>(row)];
    const std::int16_t* weight = rows.weights.data() + span.weights;
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
    for (int x = begin; x < end; ++x) {
        const Axis::Span& span = columns.spans[static_cast<std::size_t>(x)];
        const std::int16_t* weight = columns.weights.data() + span.weights;
        const std::int16_t* pixel = averages.data() + (span.first - left) * 4;
#if defined(__SSE2__)
        // One instruction multiplies the four channels of two pixels with their weights and adds the pairs.
        __m128i sum = _mm_set1_epi32(half);
        for (int i = 0; i < span.count; i += 2, pixel += 8) {
            int pair;
            std::memcpy(&pair, weight + i, sizeof pair);
            const __m128i two = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixel));
            const __m128i interleaved = _mm_unpacklo_epi16(two, _mm_unpackhi_epi64(two, two));
            sum = _mm_add_epi32(sum, _mm_madd_epi16(interleaved, _mm_set1_epi32(pair)));
        }
        sum = _mm_srli_epi32(sum, rowShift + columnShift);
        sum = _mm_packs_epi32(sum, sum);
        output[x] = static_cast<Pixel>(_mm_cvtsi128_si32(_mm_packus_epi16(sum, sum)));
#else
        std::int32_t sum[4] = {half, half, half, half};
        for (int i = 0; i < span.count; ++i, pixel += 4)
            for (int channel = 0; channel < 4; ++channel)
                sum[channel] += pixel[channel] * weight[i];
        Pixel result = 0;
        for (int channel = 3; channel >= 0; --channel)
            result = result << 8 | static_cast<Pixel>(sum[channel] >> (rowShift + columnShift));
        output[x] = result;
#endif
    }
}

} // namespace clipwren
