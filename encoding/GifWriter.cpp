#include "encoding/GifWriter.h"

#include "encoding/LzwEncoder.h"

#include <algorithm>
#include <bit>
#include <string_view>

namespace clipwren {

namespace {

constexpr std::int64_t longestDelay = 65535;
constexpr std::int64_t shortestDelay = 2;
constexpr std::size_t longestSubBlock = 255;

constexpr std::uint8_t extensionIntroducer = 0x21;
constexpr std::uint8_t graphicControlLabel = 0xF9;
constexpr std::uint8_t applicationLabel = 0xFF;
constexpr std::uint8_t imageSeparator = 0x2C;
constexpr std::uint8_t trailerByte = 0x3B;
constexpr std::uint8_t blockTerminator = 0;

constexpr std::uint8_t low(int value) { return static_cast<std::uint8_t>(value & 0xFF); }
constexpr std::uint8_t high(int value) { return static_cast<std::uint8_t>((value >> 8) & 0xFF); }

// A colour table of n entries is told as the exponent of the next power of two, at least 2.
int colorTableBits(std::size_t colors) { return std::max(1, static_cast<int>(std::bit_width(colors - 1))); }

std::vector<std::uint8_t> colorTable(const Palette& palette, int tableBits) {
    std::vector<std::uint8_t> table;
    const std::size_t entries = std::size_t{1} << tableBits;
    table.reserve(entries * 3);
    for (const Pixel color : palette)
        table.insert(table.end(), {static_cast<std::uint8_t>(color >> 16),
                                   static_cast<std::uint8_t>(color >> 8), static_cast<std::uint8_t>(color)});
    table.resize(entries * 3);
    return table;
}

// What the next image of a frame says of its delay when so many hundredths are left.
std::int64_t nextDelay(std::int64_t hundredths) {
    if (hundredths <= longestDelay) return hundredths;
    // The rest has to be a delay too.
    return std::min(longestDelay, hundredths - shortestDelay);
}

} // namespace

int minimumCodeSize(std::size_t indices) { return std::max(2, colorTableBits(indices)); }

void GifWriter::begin(PixelSize screen, const Palette& shared) {
    const int tableBits = colorTableBits(shared.size());
    writeHeader();
    writeLogicalScreen(screen, tableBits);
    sink.write(colorTable(shared, tableBits));
    writeLoopForever();
}

void GifWriter::frame(const GifFrame& frame) {
    const std::int64_t delay = nextDelay(frame.hundredths);
    writeImage(frame, static_cast<std::uint16_t>(delay));
    if (frame.hundredths > delay) prolong(frame.hundredths - delay, frame.rect);
}

void GifWriter::end() { sink.write(std::array{trailerByte}); }

void GifWriter::writeHeader() {
    constexpr std::string_view signatureAndVersion = "GIF89a";
    sink.write(
        {reinterpret_cast<const std::uint8_t*>(signatureAndVersion.data()), signatureAndVersion.size()});
}

void GifWriter::writeLogicalScreen(PixelSize screen, int tableBits) {
    constexpr int globalTable = 0x80;
    constexpr int eightBitsAComponent = 7 << 4;
    sink.write(std::array<std::uint8_t, 7>{
        low(screen.width), high(screen.width),   // width
        low(screen.height), high(screen.height), // height
        static_cast<std::uint8_t>(globalTable | eightBitsAComponent |
                                  (tableBits - 1)), // packed fields: a table of 2^tableBits
        0,                                          // background colour index
        0,                                          // pixel aspect ratio: unknown
    });
}

void GifWriter::writeLoopForever() {
    sink.write(std::array<std::uint8_t, 19>{
        extensionIntroducer,
        applicationLabel, //
        11,               // block size
        'N',
        'E',
        'T',
        'S',
        'C',
        'A',
        'P',
        'E', // application identifier
        '2',
        '.',
        '0', // authentication code
        3,   // sub-block size
        1,   // sub-block identifier: looping
        0,
        0, // loop count: for ever
        blockTerminator,
    });
}

void GifWriter::writeImage(const GifFrame& frame, std::uint16_t delay) {
    writeGraphicControl(delay, frame.transparency);
    if (frame.palette.empty()) {
        writeImageDescriptor(frame.rect, std::nullopt);
    } else {
        const int tableBits = colorTableBits(frame.palette.size());
        writeImageDescriptor(frame.rect, tableBits);
        sink.write(colorTable(frame.palette, tableBits));
    }
    writeImageData(frame.minimumCodeSize, frame.data);
}

void GifWriter::writeGraphicControl(std::uint16_t delay, std::optional<std::uint8_t> transparency) {
    constexpr std::uint8_t leaveInPlace = 1 << 2; // disposal method
    const std::uint8_t hasTransparency = transparency ? 1 : 0;
    sink.write(std::array<std::uint8_t, 8>{
        extensionIntroducer,
        graphicControlLabel,
        4,                                                         // block size
        static_cast<std::uint8_t>(leaveInPlace | hasTransparency), // packed fields
        low(delay),
        high(delay),              // delay in hundredths
        transparency.value_or(0), // transparent colour index
        blockTerminator,
    });
}

void GifWriter::writeImageDescriptor(const PixelRect& rect, std::optional<int> tableBits) {
    constexpr int localTable = 0x80;
    const int packed = tableBits ? localTable | (*tableBits - 1) : 0;
    sink.write(std::array<std::uint8_t, 10>{
        imageSeparator,                      //
        low(rect.x), high(rect.x),           // left
        low(rect.y), high(rect.y),           // top
        low(rect.width), high(rect.width),   // width
        low(rect.height), high(rect.height), // height
        static_cast<std::uint8_t>(packed),   // packed fields: a table of 2^tableBits
    });
}

void GifWriter::writeImageData(int minimumCodeSize, std::span<const std::uint8_t> data) {
    sink.write(std::array{static_cast<std::uint8_t>(minimumCodeSize)});
    while (!data.empty()) {
        const std::size_t length = std::min(data.size(), longestSubBlock);
        sink.write(std::array{static_cast<std::uint8_t>(length)});
        sink.write(data.first(length));
        data = data.subspan(length);
    }
    sink.write(std::array{blockTerminator});
}

void GifWriter::prolong(std::int64_t hundredths, const PixelRect& rect) {
    constexpr std::uint8_t nothing = 0;
    GifFrame empty{
        .rect = {rect.x, rect.y, 1, 1}, .transparency = nothing, .minimumCodeSize = minimumCodeSize(1)};
    empty.data = LzwEncoder().encode(std::array{IndexChoice{nothing, nothing}}, empty.minimumCodeSize);
    while (hundredths > 0) {
        const std::int64_t delay = nextDelay(hundredths);
        writeImage(empty, static_cast<std::uint16_t>(delay));
        hundredths -= delay;
    }
}

} // namespace clipwren
