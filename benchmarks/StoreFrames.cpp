// Keeps raw frames in the recorder's frame store and prints what they take.
//
//   clipwren-store FRAMES TIMES
//   clipwren-store --minutes M [--fps N] FRAMES TIMES [FRAMES TIMES]...
//
// The files are as clipwren-encode takes them; they are kept once. With --minutes they are played in turn,
// twenty seconds of each, at N frames a second (30) until so many minutes of a recording have passed, as
// quickly as possible; what is held then is printed every simulated minute.

#include "base/SerialQueue.h"
#include "benchmarks/RawFrames.h"
#include "capture/FrameStore.h"
#include "platform/Memory.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

using namespace clipwren;

namespace {

struct Options {
    double minutes = 0;
    int fps = 30;
    std::vector<const char*> files;
};

bool parse(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--minutes" && i + 1 < argc)
            options.minutes = std::atof(argv[++i]);
        else if (argument == "--fps" && i + 1 < argc)
            options.fps = std::atoi(argv[++i]);
        else
            options.files.push_back(argv[i]);
    }
    const std::size_t count = options.files.size();
    return options.fps > 0 && (count == 2 || (options.minutes > 0 && count > 0 && count % 2 == 0));
}

// Only its name is handed over.
class NoStream : public CaptureStream {
public:
    Expected<void, PlatformError> addOutput(std::shared_ptr<StreamOutput>, StreamOutputType,
                                            std::shared_ptr<SerialQueue>) override {
        return {};
    }
    void start(StreamCompletion) override {}
    void stop(StreamCompletion) override {}
    bool cropsAndScales() const override { return true; }
};

class EndlessMemory : public Memory {
public:
    std::optional<std::int64_t> available() const override { return std::nullopt; }
};

double megabytes(double bytes) { return bytes / (1 << 20); }

// The process's own memory, files left out.
double resident() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("RssAnon:")) return std::atof(line.c_str() + 8) / 1024;
    return 0;
}

double processorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

class Recording {
public:
    void keep(const Image& image, const MediaTime& time) {
        const double before = processorSeconds();
        store.didOutputSample(stream,
                              {.isValid = true, .status = 0, .image = image, .presentationTime = time},
                              StreamOutputType::screen);
        spent += processorSeconds() - before;
        ++count;
    }

    void print(const char* name) const {
        const double nominal = megabytes(static_cast<double>(store.byteCount()));
        const double held = resident() - atStart;
        std::printf("%-40s %7d frames, nominal %9.1f MB, held %8.1f MB (1/%.1f), keeping %.3f ms a frame\n",
                    name, count, nominal, held, nominal / held, spent * 1000 / count);
        std::fflush(stdout);
    }

private:
    NoStream stream;
    EndlessMemory memory;
    FrameStore store{MemoryWatch(memory, [] {}), [] { return false; }};
    double atStart = resident();
    double spent = 0;
    int count = 0;
};

bool keepOnce(const Options& options) {
    Recording recording;
    RawFrames frames(options.files[0], options.files[1]);
    int count = 0;
    for (; const auto frame = frames.next(); ++count)
        recording.keep(frame->image, frame->time);
    if (count > 0) recording.print(options.files[0]);
    return count > 0;
}

bool keepMixed(const Options& options) {
    Recording recording;
    const int most = static_cast<int>(options.minutes * 60 * options.fps);
    const int minute = 60 * options.fps;
    int number = 0;
    for (std::size_t scene = 0; number < most; scene = (scene + 2) % options.files.size()) {
        const int end = std::min(most, number + 20 * options.fps);
        while (number < end) {
            RawFrames frames(options.files[scene], options.files[scene + 1]);
            auto frame = frames.next();
            if (!frame) return false;
            for (; frame && number < end; frame = frames.next()) {
                recording.keep(frame->image, {number++, options.fps});
                if (number % minute == 0)
                    recording.print(("minute " + std::to_string(number / minute)).c_str());
            }
        }
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, options)) {
        std::fprintf(stderr,
                     "usage: clipwren-store [--minutes M [--fps N]] FRAMES TIMES [FRAMES TIMES]...\n");
        return 2;
    }
    if (!(options.minutes > 0 ? keepMixed(options) : keepOnce(options))) {
        std::fprintf(stderr, "a file holds no frames\n");
        return 1;
    }
    return 0;
}
