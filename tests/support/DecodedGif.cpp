#include "tests/support/DecodedGif.h"

#include <gif_lib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <iterator>
#include <utility>

namespace clipwren {

namespace {

struct Input {
    std::span<const std::uint8_t> rest;

    static int read(GifFileType* file, GifByteType* target, int length) {
        auto& input = *static_cast<Input*>(file->UserData);
        const std::size_t count = std::min(input.rest.size(), static_cast<std::size_t>(length));
        std::copy_n(input.rest.begin(), count, target);
        input.rest = input.rest.subspan(count);
        return static_cast<int>(count);
    }
};

class Reader {
public:
    Reader(std::span<const std::uint8_t> bytes, bool keepPixels) : keepPixels(keepPixels), input{bytes} {
        result.version.assign(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(
                                                                 std::min<std::size_t>(6, bytes.size())));
        int error = 0;
        file = DGifOpen(&input, &Input::read, &error);
        if (!file) result.error = text(error);
    }
    ~Reader() {
        if (file) DGifCloseFile(file, nullptr);
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    DecodedGif run() {
        if (!file) return result;
        result.size = {file->SWidth, file->SHeight};
        screen.assign(static_cast<std::size_t>(file->SWidth) * static_cast<std::size_t>(file->SHeight),
                      0xFF000000);
        for (;;) {
            GifRecordType type = UNDEFINED_RECORD_TYPE;
            if (DGifGetRecordType(file, &type) == GIF_ERROR) return failed();
            if (type == TERMINATE_RECORD_TYPE) break;
            const bool read = type == EXTENSION_RECORD_TYPE ? readExtension() : readImage();
            if (!read) return failed();
        }
        if (!input.rest.empty()) result.error = "bytes after the trailer";
        return std::move(result);
    }

private:
    static std::string text(int error) {
        const char* description = GifErrorString(error);
        return description ? description : "unknown error";
    }

    DecodedGif failed() {
        if (result.error.empty()) result.error = text(file->Error);
        return std::move(result);
    }

    bool readExtension() {
        int label = 0;
        GifByteType* block = nullptr;
        if (DGifGetExtension(file, &label, &block) == GIF_ERROR) return false;
        const bool isLooping = label == APPLICATION_EXT_FUNC_CODE && block && block[0] == 11 &&
                               !std::memcmp(block + 1, "NETSCAPE2.0", 11);
        if (label == GRAPHICS_EXT_FUNC_CODE && block) DGifExtensionToGCB(block[0], block + 1, &control);
        while (block) {
            if (DGifGetExtensionNext(file, &block) == GIF_ERROR) return false;
            if (isLooping && block && block[0] == 3 && block[1] == 1)
                result.loopCount = block[2] | block[3] << 8;
        }
        return true;
    }

    bool readImage() {
        if (DGifGetImageDesc(file) == GIF_ERROR) return false;
        const GifImageDesc& image = file->Image;
        const ColorMapObject* table = image.ColorMap ? image.ColorMap : file->SColorMap;
        if (image.Interlace || !table) {
            result.error = "an image without a table or interlaced";
            return false;
        }
        DecodedGifFrame frame{.rect = {image.Left, image.Top, image.Width, image.Height},
                              .hundredths = control.DelayTime,
                              .disposal = control.DisposalMode,
                              .paletteSize = image.ColorMap ? image.ColorMap->ColorCount : 0,
                              .hasTransparency = control.TransparentColor != NO_TRANSPARENT_COLOR,
                              .shown = {}};
        if (frame.rect.maxX() > file->SWidth || frame.rect.maxY() > file->SHeight) {
            result.error = "an image reaches out of the screen";
            return false;
        }
        std::vector<GifPixelType> row(static_cast<std::size_t>(image.Width));
        for (int y = 0; y < image.Height; ++y) {
            if (DGifGetLine(file, row.data(), image.Width) == GIF_ERROR) return false;
            if (!drawRow(row, image, *table, y)) return false;
        }
        if (!keepPixels && !result.frames.empty()) result.frames.back().shown.clear();
        frame.shown = screen;
        result.frames.push_back(std::move(frame));
        control = {};
        control.TransparentColor = NO_TRANSPARENT_COLOR;
        return true;
    }

    bool drawRow(const std::vector<GifPixelType>& row, const GifImageDesc& image, const ColorMapObject& table,
                 int y) {
        Pixel* target =
            screen.data() + static_cast<std::ptrdiff_t>(image.Top + y) * file->SWidth + image.Left;
        for (std::size_t x = 0; x < row.size(); ++x) {
            if (row[x] == control.TransparentColor) continue;
            if (row[x] >= table.ColorCount) {
                result.error = "an index beyond its table";
                return false;
            }
            const GifColorType& color = table.Colors[row[x]];
            target[x] = static_cast<Pixel>(color.Red << 16 | color.Green << 8 | color.Blue);
        }
        return true;
    }

    const bool keepPixels;
    Input input;
    GifFileType* file = nullptr;
    GraphicsControlBlock control{0, false, 0, NO_TRANSPARENT_COLOR};
    std::vector<Pixel> screen;
    DecodedGif result;
};

} // namespace

DecodedGif DecodedGif::read(std::span<const std::uint8_t> bytes, bool keepPixels) {
    return Reader(bytes, keepPixels).run();
}

DecodedGif DecodedGif::read(const std::filesystem::path& path, bool keepPixels) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
    return read(bytes, keepPixels);
}

int DecodedGif::totalHundredths() const {
    int total = 0;
    for (const DecodedGifFrame& frame : frames)
        total += frame.hundredths;
    return total;
}

} // namespace clipwren
