#include "base/BlockPlanes.h"

#include "base/BitGroups.h"

#include <array>
#include <cstring>

namespace clipwren {

namespace {

using bitgroups::groupSize;

constexpr int width = Image::blockWidth;
constexpr int height = Image::blockHeight;
constexpr int pixelCount = width * height;
constexpr int groupsInRow = width / groupSize;

// Channel by channel, with a row of zeros above: blue less green, green, red less green, alpha. In most
// pictures the channels rise and fall together, so that what is left of blue and red is small.
struct Planes {
    std::uint8_t bytes[4][pixelCount + width];

    const std::uint8_t* row(int channel, int y) const { return bytes[channel] + (y + 1) * width; }
    std::uint8_t* row(int channel, int y) { return bytes[channel] + (y + 1) * width; }
};

constexpr int green = 1;

void split(const Pixel* pixels, int channels, Planes& planes) {
    for (auto& plane : planes.bytes)
        std::memset(plane, 0, width);
    std::uint8_t *b = planes.row(0, 0), *g = planes.row(1, 0), *r = planes.row(2, 0), *a = planes.row(3, 0);
    for (int i = 0; i < pixelCount; ++i) {
        const auto middle = static_cast<std::uint8_t>(pixels[i] >> 8);
        b[i] = static_cast<std::uint8_t>(pixels[i] - middle);
        g[i] = middle;
        r[i] = static_cast<std::uint8_t>((pixels[i] >> 16) - middle);
    }
    if (channels < 4) return;
    for (int i = 0; i < pixelCount; ++i)
        a[i] = static_cast<std::uint8_t>(pixels[i] >> 24);
}

void join(const Planes& planes, Pixel* pixels) {
    const std::uint8_t *b = planes.row(0, 0), *g = planes.row(1, 0), *r = planes.row(2, 0),
                       *a = planes.row(3, 0);
    for (int i = 0; i < pixelCount; ++i) {
        const auto blue = static_cast<std::uint8_t>(b[i] + g[i]);
        const auto red = static_cast<std::uint8_t>(r[i] + g[i]);
        pixels[i] = blue | Pixel{g[i]} << 8 | Pixel{red} << 16 | Pixel{a[i]} << 24;
    }
}

// Small differences to either side as small numbers: 0, -1, 1, -2, 2, ...
std::uint8_t folded(int value, int prediction) {
    const auto difference = static_cast<std::uint8_t>(value - prediction);
    return static_cast<std::uint8_t>(difference << 1 ^ (difference >= 128 ? 0xFF : 0));
}

void missesFromAbove(const std::uint8_t* row, std::uint8_t* misses) {
    for (int x = 0; x < width; ++x)
        misses[x] = folded(row[x], row[x - width]);
}

void missesFromLeft(const std::uint8_t* row, std::uint8_t* misses) {
    for (int x = 1; x < width; ++x)
        misses[x] = folded(row[x], row[x - 1]);
    misses[0] = folded(row[0], row[-width]);
}

// Eight at a time, every second one in a lane of 16 bits, which the sum of a whole row fits.
unsigned sum(const std::uint8_t* numbers) {
    constexpr std::uint64_t lanes = 0x00FF00FF00FF00FF;
    std::uint64_t total = 0;
    for (int x = 0; x < width; x += 8) {
        std::uint64_t eight;
        std::memcpy(&eight, numbers + x, sizeof eight);
        total += (eight & lanes) + (eight >> 8 & lanes);
    }
    return static_cast<unsigned>(total * 0x0001000100010001 >> 48);
}

// Two bytes in front of each row of each plane: whether it is predicted from the left, and the class of each
// group.
std::uint8_t* packRow(bool isFromLeft, const std::uint8_t* misses, std::uint8_t* to) {
    std::uint8_t* head = to;
    to += 2;
    unsigned bits = isFromLeft;
    for (int group = 0; group < groupsInRow; ++group) {
        const int bitClass = bitgroups::classOf(misses + group * groupSize);
        bits |= static_cast<unsigned>(bitClass) << (1 + 3 * group);
        to = bitgroups::putGroup(bitClass, misses + group * groupSize, to);
    }
    head[0] = static_cast<std::uint8_t>(bits);
    head[1] = static_cast<std::uint8_t>(bits >> 8);
    return to;
}

int rowSize(const std::uint8_t* misses) {
    int bytes = 2;
    for (int group = 0; group < groupsInRow; ++group)
        bytes += bitgroups::bytesOf(bitgroups::classOf(misses + group * groupSize));
    return bytes;
}

const std::uint8_t* unpackRow(const std::uint8_t* from, std::uint8_t* row) {
    const unsigned bits = from[0] | static_cast<unsigned>(from[1]) << 8;
    from += 2;
    std::array<std::uint8_t, width> misses;
    for (int group = 0; group < groupsInRow; ++group)
        from = bitgroups::getGroup(static_cast<int>(bits >> (1 + 3 * group) & 7), from,
                                   misses.data() + group * groupSize);
    for (std::uint8_t& miss : misses)
        miss = static_cast<std::uint8_t>(miss >> 1 ^ (miss & 1 ? 0xFF : 0));
    if ((bits & 1) != 0) {
        std::uint8_t value = row[-width];
        for (int x = 0; x < width; ++x)
            row[x] = value = static_cast<std::uint8_t>(value + misses[static_cast<std::size_t>(x)]);
    } else {
        for (int x = 0; x < width; ++x)
            row[x] = static_cast<std::uint8_t>(row[x - width] + misses[static_cast<std::size_t>(x)]);
    }
    return from;
}

} // namespace

int estimatedPlanesSize(const Pixel* pixels) {
    constexpr int step = 4; // one row in so many speaks for the others,
    int bytes = 0;
    for (int y = step / 2; y < height; y += step) {
        // Two rows, the second of which is looked at.
        std::uint8_t greens[2 * width], reds[2 * width], above[width], left[width];
        const Pixel* row = pixels + (y - 1) * width;
        for (int x = 0; x < 2 * width; ++x) {
            greens[x] = static_cast<std::uint8_t>(row[x] >> 8);
            reds[x] = static_cast<std::uint8_t>((row[x] >> 16) - (row[x] >> 8));
        }
        missesFromAbove(greens + width, above);
        missesFromLeft(greens + width, left);
        const bool isFromLeft = sum(left) < sum(above);
        bytes += rowSize(isFromLeft ? left : above);
        if (isFromLeft)
            missesFromLeft(reds + width, left);
        else
            missesFromAbove(reds + width, above);
        bytes += 2 * rowSize(isFromLeft ? left : above); // and red for blue
    }
    return bytes * step;
}

std::uint8_t* packPlanes(const Pixel* pixels, bool isOpaque, std::uint8_t* packed) {
    const int channels = isOpaque ? 3 : 4;
    std::uint8_t* to = packed;
    Planes planes;
    split(pixels, channels, planes);
    for (int y = 0; y < height; ++y) {
        // What suits green suits the others.
        std::uint8_t above[width], left[width], other[width];
        missesFromAbove(planes.row(green, y), above);
        missesFromLeft(planes.row(green, y), left);
        const bool isFromLeft = sum(left) < sum(above);
        for (int channel = 0; channel < channels; ++channel) {
            if (channel == green) {
                to = packRow(isFromLeft, isFromLeft ? left : above, to);
                continue;
            }
            if (isFromLeft)
                missesFromLeft(planes.row(channel, y), other);
            else
                missesFromAbove(planes.row(channel, y), other);
            to = packRow(isFromLeft, other, to);
        }
    }
    return to;
}

const std::uint8_t* unpackPlanes(const std::uint8_t* packed, bool isOpaque, Pixel* pixels) {
    const int channels = isOpaque ? 3 : 4;
    const std::uint8_t* from = packed;
    Planes planes;
    for (auto& plane : planes.bytes)
        std::memset(plane, 0, width);
    if (channels == 3) std::memset(planes.row(3, 0), 0xFF, pixelCount);
    for (int y = 0; y < height; ++y)
        for (int channel = 0; channel < channels; ++channel)
            from = unpackRow(from, planes.row(channel, y));
    join(planes, pixels);
    return from;
}

} // namespace clipwren
