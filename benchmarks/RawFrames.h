#pragma once

#include "base/Image.h"
#include "base/MediaTime.h"

#include <cmath>
#include <fstream>
#include <optional>
#include <vector>

namespace clipwren {

// Frames from two files: BGRA frames one after another, and "width height" and then the presentation time of
// each frame in seconds, one a line. They come as block-shared images, as a capture makes them.
class RawFrames {
public:
    struct Frame {
        Image image;
        MediaTime time;
    };

    RawFrames(const char* frames, const char* times) : pixels(frames, std::ios::binary), times(times) {
        if (!(this->times >> width >> height) || width < 1 || height < 1) return;
        buffer.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    }

    // None at the end, and where the files hold no frames.
    std::optional<Frame> next() {
        double time = 0;
        const auto size = static_cast<std::streamsize>(buffer.size() * sizeof(Pixel));
        if (buffer.empty() || !(times >> time) || !pixels.read(reinterpret_cast<char*>(buffer.data()), size))
            return std::nullopt;
        const Image::Patch whole{{0, 0, width, height}, buffer.data(), width};
        last = last ? last->replacing({&whole, 1}) : Image(PixelView{buffer.data(), width, height, width});
        return Frame{*last, MediaTime::nanoseconds(std::llround(time * 1e9))};
    }

private:
    std::ifstream pixels;
    std::ifstream times;
    int width = 0;
    int height = 0;
    std::vector<Pixel> buffer;
    std::optional<Image> last;
};

} // namespace clipwren
