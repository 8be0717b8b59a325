// A capture from an X server whose answers go wrong: it ends with what it has, with an error, or when it is
// told to.

#include "fuzz/AbsurdServer.h"
#include "fuzz/Demand.h"
#include "platform/linux/x11/X11CaptureWorker.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

using namespace clipwren;

namespace {

// Looks at every pixel that it gets.
class Viewer : public X11CaptureWorker::Client {
public:
    Viewer(PixelSize size, EndSignal& end) : size(size), end(end) {}

    void captureStarted() override {}
    bool takesSample() override { return true; }
    void deliver(StreamSample sample) override {
        if (sample.image) {
            demand(sample.image->width() == size.width && sample.image->height() == size.height,
                   "a frame has the size of the stream");
            std::vector<Pixel> pixels(static_cast<std::size_t>(size.width) *
                                      static_cast<std::size_t>(size.height));
            sample.image->copy(sample.image->bounds(), pixels.data(), size.width);
            for (const Pixel pixel : pixels)
                demand(pixel >> 24 == 255, "a frame is opaque");
        }
        hasSample = true;
        endIfDone();
    }

    // Nothing more will go wrong. Any thread.
    void allIsSound() {
        isSound = true;
        endIfDone();
    }
    bool sawSomething() const { return hasSample; }

private:
    void endIfDone() {
        if (hasSample && isSound) end.request(EndSignal::Request::finish);
    }

    const PixelSize size;
    EndSignal& end;
    std::atomic<bool> hasSample = false;
    std::atomic<bool> isSound = false;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const bool isScaled = size % 2 == 1;
    const PixelSize frame = isScaled ? PixelSize{31, 24} : PixelSize{64, 48};
    EndSignal end;
    Viewer viewer(frame, end);
    AbsurdServer server({data, size}, {[&viewer] { viewer.allIsSound(); },
                                       [&end] { end.request(EndSignal::Request::abandon); }});
    X11CaptureWorker::Job job{.displayName = server.displayName(), .displayID = AbsurdServer::monitorID};
    job.configuration.sourceRect = {100, 80, 64, 48};
    job.configuration.width = frame.width;
    job.configuration.height = frame.height;
    job.configuration.destinationRect = {0, 0, static_cast<double>(frame.width),
                                         static_cast<double>(frame.height)};
    job.configuration.scalesToFit = true;
    job.configuration.minimumFrameInterval = {1, 1000};
    job.configuration.pixelFormat = pixelFormatBGRA;
    job.configuration.showsCursor = true;
    job.configuration.capturesAudio = false;
    const auto failure = X11CaptureWorker(job, viewer, end).run();
    demand(failure || viewer.sawSomething() || end.requested() == EndSignal::Request::abandon,
           "a capture that nobody ended has a frame or an error");
    demand(size > 0 || !failure, failure ? failure->localizedDescription : "");
    return 0;
}
