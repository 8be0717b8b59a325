// Decodes a GIF with giflib and composes its frames as any viewer does: a second opinion beside Pillow's.
//
//   gif_frames FILE     standard output: "WIDTH HEIGHT FRAMES LOOPS\n" (LOOPS -1: plays once), then for every
//                       frame its delay in hundredths as a line and WIDTH x HEIGHT x 3 bytes of RGB
#include <gif_lib.h>

#include <cstdio>
#include <cstring>
#include <vector>

namespace {

struct Canvas {
    int width, height;
    std::vector<unsigned char> rgb;

    void draw(const SavedImage& frame, const ColorMapObject& colours, int transparent) {
        const GifImageDesc& area = frame.ImageDesc;
        for (int y = 0; y < area.Height; ++y)
            for (int x = 0; x < area.Width; ++x) {
                const int index = frame.RasterBits[y * area.Width + x];
                if (index == transparent || index >= colours.ColorCount) continue;
                if (x + area.Left >= width || y + area.Top >= height) continue;
                const GifColorType& colour = colours.Colors[index];
                unsigned char* to =
                    &rgb[(static_cast<std::size_t>(y + area.Top) * width + x + area.Left) * 3];
                to[0] = colour.Red;
                to[1] = colour.Green;
                to[2] = colour.Blue;
            }
    }

    void clear(const GifImageDesc& area) {
        for (int y = area.Top; y < area.Top + area.Height && y < height; ++y)
            std::memset(&rgb[(static_cast<std::size_t>(y) * width + area.Left) * 3], 0,
                        static_cast<std::size_t>(area.Width) * 3);
    }
};

// How often the animation plays, from the application extension before the first frame; 0 is for ever.
int loops(const GifFileType& gif) {
    const SavedImage& first = gif.SavedImages[0];
    for (int i = 0; i + 1 < first.ExtensionBlockCount; ++i) {
        const ExtensionBlock& name = first.ExtensionBlocks[i];
        const ExtensionBlock& count = first.ExtensionBlocks[i + 1];
        if (name.Function == APPLICATION_EXT_FUNC_CODE && name.ByteCount == 11 &&
            std::memcmp(name.Bytes, "NETSCAPE2.0", 11) == 0 && count.ByteCount == 3 && count.Bytes[0] == 1)
            return count.Bytes[1] | count.Bytes[2] << 8;
    }
    return -1;
}

} // namespace

int main(int count, char** arguments) {
    int error = 0;
    GifFileType* gif = count == 2 ? DGifOpenFileName(arguments[1], &error) : nullptr;
    if (gif == nullptr || DGifSlurp(gif) != GIF_OK || gif->ImageCount == 0) {
        const char* reason = GifErrorString(gif != nullptr ? gif->Error : error);
        std::fprintf(stderr, "gif_frames: %s\n", reason != nullptr ? reason : "no frame");
        return 1;
    }
    Canvas canvas{gif->SWidth, gif->SHeight, {}};
    canvas.rgb.resize(static_cast<std::size_t>(canvas.width) * canvas.height * 3);
    std::printf("%d %d %d %d\n", canvas.width, canvas.height, gif->ImageCount, loops(*gif));
    for (int i = 0; i < gif->ImageCount; ++i) {
        const SavedImage& frame = gif->SavedImages[i];
        GraphicsControlBlock control{DISPOSAL_UNSPECIFIED, false, 0, NO_TRANSPARENT_COLOR};
        DGifSavedExtensionToGCB(gif, i, &control);
        const ColorMapObject* colours =
            frame.ImageDesc.ColorMap != nullptr ? frame.ImageDesc.ColorMap : gif->SColorMap;
        if (colours == nullptr) {
            std::fprintf(stderr, "gif_frames: frame %d has no colours\n", i);
            return 1;
        }
        const std::vector<unsigned char> before = canvas.rgb;
        canvas.draw(frame, *colours, control.TransparentColor);
        std::printf("%d\n", control.DelayTime);
        std::fwrite(canvas.rgb.data(), 1, canvas.rgb.size(), stdout);
        if (control.DisposalMode == DISPOSE_BACKGROUND) canvas.clear(frame.ImageDesc);
        if (control.DisposalMode == DISPOSE_PREVIOUS) canvas.rgb = before;
    }
    return DGifCloseFile(gif, &error) == GIF_OK ? 0 : 1;
}
