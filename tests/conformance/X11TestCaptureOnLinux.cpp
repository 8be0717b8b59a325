#include "tests/conformance/X11TestCapture.h"

#include "platform/linux/x11/X11Screens.h"
#include "tests/conformance/EventLoop.h"

#include <chrono>
#include <random>

namespace clipwren {

X11TestCapture::X11TestCapture(std::string display)
    : displayName(std::move(display)),
      connection(std::move(*X11Connection::open(displayName))),
      capture(*connection, mainQueue, displayName) {}

std::vector<NativeScreen> X11TestCapture::screens() const {
    return readScreens(connection->raw(), connection->screen());
}

void X11TestCapture::begin(const StreamConfiguration& configuration, std::optional<std::uint32_t> display) {
    stream =
        capture.makeStream({.display = {display.value_or(screens().front().id)}}, configuration, delegate);
    EXPECT_TRUE(stream->addOutput(keeper, StreamOutputType::screen, queue));
    stream->start(started.completion());
    EXPECT_TRUE(runEventLoopUntil([&] { return started.count > 0; }));
}

bool X11TestCapture::waitForPictures(std::size_t count) {
    return runEventLoopUntil([&] { return keeper->pictures().size() >= count; });
}

bool X11TestCapture::stop() {
    stream->stop(stopped.completion());
    const bool completed = runEventLoopUntil([&] { return stopped.count > 0; });
    queue->sync([] {});
    return completed;
}

std::vector<Pixel> pixelsOf(const Image& image) {
    std::vector<Pixel> pixels(static_cast<std::size_t>(image.width()) *
                              static_cast<std::size_t>(image.height()));
    image.copy(image.bounds(), pixels.data(), image.width());
    return pixels;
}

std::vector<Pixel> noise(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<Pixel> pixels(static_cast<std::size_t>(width * height));
    for (Pixel& pixel : pixels)
        pixel = static_cast<Pixel>(random()) | opaque;
    return pixels;
}

StreamConfiguration plain(const Rect& rect, int fps) {
    return captureConfiguration(rect, static_cast<int>(rect.width), static_cast<int>(rect.height), fps);
}

double nowSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

} // namespace clipwren
