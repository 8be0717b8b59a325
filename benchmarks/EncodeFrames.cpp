// Writes raw frames as a GIF with the product's own encoder and prints what it cost, one "name value" a line.
//
//   clipwren-encode [--plain] [--packed] [--threads N] FRAMES TIMES OUT
//
// FRAMES holds BGRA frames one after another; TIMES says "width height" and then the presentation time of
// each frame in seconds, one a line. With --plain the frames go without the badge. The frames are first read
// into block-shared images; that is timed by itself. With --packed they are handed over as the recorder does.

#include "benchmarks/RawFrames.h"
#include "encoding/AnimationWriter.h"
#include "encoding/ByteSink.h"
#include "encoding/RecordedAnimation.h"

#ifdef CLIPWREN_BENCHMARK_STAMPS
#include "platform/linux/qt/QtCanvas.h"

#include <QGuiApplication>
#endif

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

using namespace clipwren;

namespace {

struct Options {
    bool plain = false;
    bool packed = false;
    unsigned threads = encodingThreads();
    const char* frames = nullptr;
    const char* times = nullptr;
    const char* out = nullptr;
};

bool parse(int argc, char** argv, Options& options) {
    std::vector<const char*> names;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--plain")
            options.plain = true;
        else if (argument == "--packed")
            options.packed = true;
        else if (argument == "--threads" && i + 1 < argc)
            options.threads = static_cast<unsigned>(std::atoi(argv[++i]));
        else
            names.push_back(argv[i]);
    }
    if (names.size() != 3) return false;
    options.frames = names[0];
    options.times = names[1];
    options.out = names[2];
    return true;
}

std::vector<RecordedFrame> read(const Options& options) {
    RawFrames raw(options.frames, options.times);
    std::vector<RecordedFrame> frames;
    ImagePacker packer;
    while (const auto frame = raw.next())
        frames.push_back(
            {options.packed ? FrameImage(packer.pack(frame->image)) : FrameImage(frame->image), frame->time});
    return frames;
}

double seconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double processorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto total = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
    };
    return total(usage.ru_utime) + total(usage.ru_stime);
}

// The most memory that the process ever had, in megabytes.
double peakMemory() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

class StreamSink : public ByteSink {
public:
    explicit StreamSink(const char* path) : file(path, std::ios::binary) {}

    void write(std::span<const std::uint8_t> bytes) override {
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    bool good() const override { return file.good(); }
    bool close() {
        file.close();
        return good();
    }

private:
    std::ofstream file;
};

int encode(const Options& options, Canvases* canvases) {
    const double start = seconds();
    const std::vector<RecordedFrame> frames = read(options);
    if (frames.empty()) {
        std::fprintf(stderr, "no frames in %s\n", options.frames);
        return 1;
    }
    const double memoryBefore = peakMemory();
    const double processorBefore = processorSeconds();
    const double read = seconds();

    StreamSink file(options.out);
    const bool written = writeAnimation(recordedAnimation(frames, canvases), file, options.threads);
    if (!written || !file.close()) {
        std::fprintf(stderr, "%s could not be written\n", options.out);
        return 1;
    }
    const double end = seconds();
    std::printf("frames %zu\nread_seconds %.4f\nencode_seconds %.4f\nencode_processor_seconds %.4f\n"
                "total_seconds %.4f\nextra_memory_megabytes %.1f\n",
                frames.size(), read - start, end - read, processorSeconds() - processorBefore, end - start,
                peakMemory() - memoryBefore);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, options)) {
        std::fprintf(stderr, "usage: clipwren-encode [--plain] [--packed] [--threads N] FRAMES TIMES OUT\n");
        return 2;
    }
    if (options.plain) return encode(options, nullptr);
#ifdef CLIPWREN_BENCHMARK_STAMPS
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    const QGuiApplication application(argc, argv);
    QtCanvases canvases;
    return encode(options, &canvases);
#else
    std::fprintf(stderr, "built without a canvas: only --plain\n");
    return 2;
#endif
}
