// Records a region of the primary screen for a while, as Clipwren does, into the frame store, and prints what
// it cost and what came of it, one "name value" a line.
//
//   clipwren-capture [--region X,Y,WxH] [--to WxH] [--fps N] [--seconds S] [--counter] [--no-cursor] [--log
//   FILE]
//
// --log, with --counter: each frame's picture number and time, in seconds of the monotonic clock, one a line.

#include "base/SerialQueue.h"
#include "benchmarks/FrameCounter.h"
#include "capture/FrameStore.h"
#include "platform/linux/LinuxMemory.h"
#include "platform/linux/qt/QtMainQueue.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11ScreenCapture.h"

#include <QCoreApplication>

#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using namespace clipwren;

namespace {

struct Options {
    int x = 100, y = 100, width = 800, height = 450;
    int toWidth = 0, toHeight = 0;
    int fps = 15;
    double seconds = 10;
    bool counter = false;
    bool cursor = true;
    const char* log = nullptr;
};

bool parse(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view name = argv[i];
        if (name == "--counter") {
            options.counter = true;
            continue;
        }
        if (name == "--no-cursor") {
            options.cursor = false;
            continue;
        }
        if (++i == argc) return false;
        bool known = true;
        if (name == "--region")
            known = std::sscanf(argv[i], "%d,%d,%dx%d", &options.x, &options.y, &options.width,
                                &options.height) == 4;
        else if (name == "--to")
            known = std::sscanf(argv[i], "%dx%d", &options.toWidth, &options.toHeight) == 2;
        else if (name == "--fps")
            options.fps = std::atoi(argv[i]);
        else if (name == "--seconds")
            options.seconds = std::atof(argv[i]);
        else if (name == "--log")
            options.log = argv[i];
        else
            known = false;
        if (!known) return false;
    }
    if (options.toWidth == 0) options.toWidth = options.width;
    if (options.toHeight == 0) options.toHeight = options.height;
    return options.fps > 0;
}

struct Usage {
    double processor;
    long switches;
};

Usage usage() {
    rusage now{};
    getrusage(RUSAGE_SELF, &now);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return {seconds(now.ru_utime) + seconds(now.ru_stime), now.ru_nvcsw};
}

// The process's own memory in bytes, files and what is shared with the server left out.
double ownMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("RssAnon:")) return std::atof(line.c_str() + 8) * 1024;
    return 0;
}

// Hands the samples on and keeps the first picture's time, which the store takes as zero.
class FirstTime final : public StreamOutput {
public:
    explicit FirstTime(std::shared_ptr<StreamOutput> next) : next(std::move(next)) {}
    void didOutputSample(CaptureStream& stream, const StreamSample& sample, StreamOutputType type) override {
        if (!first && sample.image) first = sample.presentationTime;
        next->didOutputSample(stream, sample, type);
    }
    double seconds() const { return first ? first->seconds() : 0; }

private:
    const std::shared_ptr<StreamOutput> next;
    std::optional<MediaTime> first;
};

// Duplicates, gaps and how far the frames' times are from those of the pictures they show.
void printCounters(const std::vector<RecordedFrame>& frames, double begin, const Options& options) {
    int duplicates = 0, gaps = 0, backwards = 0;
    std::vector<double> late;
    int before = -1;
    std::ofstream log;
    if (options.log) log.open(options.log);
    ImageUnpacker unpacker;
    for (const RecordedFrame& frame : frames) {
        const Image image = frame.image.unpacked(unpacker);
        const double scale = static_cast<double>(options.toWidth) / options.width;
        const int number = FrameCounter::read([&](int x, int y) {
            return static_cast<int>(image.pixel(static_cast<int>(x * scale), static_cast<int>(y * scale)) &
                                    0xFF);
        });
        if (before >= 0) {
            duplicates += number == before;
            backwards += number < before;
            gaps += std::max(number - before - 1, 0);
        }
        before = number;
        if (log.is_open())
            log << number << ' ' << std::fixed << begin + frame.presentationTime.seconds() << '\n';
        late.push_back(frame.presentationTime.seconds() - static_cast<double>(number) / options.fps);
    }
    std::printf("duplicates %d\ngaps %d\nbackwards %d\n", duplicates, gaps, backwards);
    if (late.size() < 2) return;
    double longest = 0, shortest = 1e9;
    for (std::size_t i = 1; i < frames.size(); ++i) {
        const double distance = (frames[i].presentationTime - frames[i - 1].presentationTime).seconds();
        longest = std::max(longest, distance);
        shortest = std::min(shortest, distance);
    }
    const auto [least, most] = std::minmax_element(late.begin(), late.end());
    std::printf("shortestInterval %.4f\nlongestInterval %.4f\ntimeSpread %.4f\n", shortest, longest,
                *most - *least);
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, options)) {
        std::fprintf(stderr, "usage: clipwren-capture [--region X,Y,WxH] [--to WxH] [--fps N] [--seconds S] "
                             "[--counter] [--no-cursor] [--log FILE]\n");
        return 2;
    }
    QCoreApplication application(argc, argv);
    auto connection = X11Connection::open();
    if (!connection) {
        std::fprintf(stderr, "%s\n", connection.error().localizedDescription.c_str());
        return 1;
    }
    QtMainQueue mainQueue;
    X11ScreenCapture capture(**connection, mainQueue);
    const auto queue = std::make_shared<SerialQueue>("frames");
    const LinuxMemory memory;
    const auto store = std::make_shared<FrameStore>(MemoryWatch(memory, [] { std::puts("memoryShort 1"); }),
                                                    [queue = queue.get()] { return queue->pending() > 0; });
    const auto output = std::make_shared<FirstTime>(store);
    std::shared_ptr<CaptureStream> stream;
    int status = 1;
    Usage begin{}, end{};
    double memoryBefore = 0;

    const auto fail = [&](const PlatformError& error) {
        std::fprintf(stderr, "%s\n", error.localizedDescription.c_str());
        QCoreApplication::quit();
    };
    const auto finish = [&](const std::optional<PlatformError>& error) {
        if (error) return fail(*error);
        end = usage();
        status = 0;
        QCoreApplication::quit();
    };
    capture.shareableContent([&](const Expected<ShareableContent, PlatformError>& content) {
        if (!content) return fail(content.error());
        const StreamConfiguration configuration{
            .sourceRect = {static_cast<double>(options.x), static_cast<double>(options.y),
                           static_cast<double>(options.width), static_cast<double>(options.height)},
            .width = options.toWidth,
            .height = options.toHeight,
            .destinationRect = {0, 0, static_cast<double>(options.toWidth),
                                static_cast<double>(options.toHeight)},
            .scalesToFit = true,
            .minimumFrameInterval = {1, options.fps},
            .queueDepth = 6,
            .pixelFormat = pixelFormatBGRA,
            .showsCursor = options.cursor};
        memoryBefore = ownMemory();
        stream = capture.makeStream({.display = content->displays.front()}, configuration, {});
        stream->addOutput(output, StreamOutputType::screen, queue);
        stream->start([&](const std::optional<PlatformError>& error) {
            if (error) return fail(*error);
            begin = usage();
            mainQueue.asyncAfter(options.seconds, [&] { stream->stop(finish); });
        });
    });
    QCoreApplication::exec();
    stream.reset();
    if (status != 0) return status;

    std::vector<RecordedFrame> frames;
    std::int64_t nominal = 0;
    queue->sync([&] {
        nominal = store->byteCount();
        frames = store->take();
    });
    const double held = ownMemory() - memoryBefore;
    std::printf("frames %zu\nprocessor %.5f\nwakeups %.1f\n", frames.size(),
                (end.processor - begin.processor) / options.seconds,
                static_cast<double>(end.switches - begin.switches) / options.seconds);
    std::printf("nominalMegabytes %.2f\nheldMegabytes %.2f\n", static_cast<double>(nominal) / (1 << 20),
                held / (1 << 20));
    if (options.counter) printCounters(frames, output->seconds(), options);
    return 0;
}
