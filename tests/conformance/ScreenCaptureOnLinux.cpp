#include "platform/linux/capture/AreaScaler.h"
#include "platform/linux/capture/CursorImage.h"
#include "platform/linux/qt/QtMainQueue.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Reply.h"
#include "platform/linux/x11/X11ScreenCapture.h"
#include "platform/linux/x11/X11Screens.h"
#include "tests/conformance/EventLoop.h"
#include "tests/conformance/ScreenCaptureConformance.h"
#include "tests/conformance/X11TestServer.h"

#include <xcb/xfixes.h>

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <random>

namespace clipwren {

namespace {

constexpr Pixel opaque = 0xFF000000;

class DelegateWitness : public StreamDelegate {
public:
    int count = 0;
    PlatformError error;
    void didStopWithError(const PlatformError& reason) override {
        ++count;
        error = reason;
    }
};

// The adapter on a server, by default the one of DISPLAY, with what its streams need.
struct Capture {
    std::string displayName;
    std::unique_ptr<X11Connection> connection;
    QtMainQueue mainQueue;
    X11ScreenCapture capture;
    std::shared_ptr<SerialQueue> queue = std::make_shared<SerialQueue>("frames");
    std::shared_ptr<SampleKeeper> keeper = std::make_shared<SampleKeeper>();
    std::shared_ptr<DelegateWitness> delegate = std::make_shared<DelegateWitness>();
    std::shared_ptr<CaptureStream> stream;
    CompletionWitness started;
    CompletionWitness stopped;

    explicit Capture(std::string display = {})
        : displayName(std::move(display)),
          connection(std::move(*X11Connection::open(displayName))),
          capture(*connection, mainQueue, displayName) {}

    std::vector<NativeScreen> screens() const { return readScreens(connection->raw(), connection->screen()); }

    void begin(const StreamConfiguration& configuration, std::optional<std::uint32_t> display = {}) {
        stream = capture.makeStream({.display = {display.value_or(screens().front().id)}}, configuration,
                                    delegate);
        EXPECT_TRUE(stream->addOutput(keeper, StreamOutputType::screen, queue));
        stream->start(started.completion());
        EXPECT_TRUE(runEventLoopUntil([&] { return started.count > 0; }));
    }

    // Waits for that many pictures in all.
    bool waitForPictures(std::size_t count) {
        return runEventLoopUntil([&] { return keeper->pictures().size() >= count; });
    }

    bool stop() {
        stream->stop(stopped.completion());
        const bool completed = runEventLoopUntil([&] { return stopped.count > 0; });
        queue->sync([] {});
        return completed;
    }
};

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

StreamConfiguration plain(const Rect& rect, int fps = 30) {
    return captureConfiguration(rect, static_cast<int>(rect.width), static_cast<int>(rect.height), fps);
}

double nowSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

bool xrandr(const X11TestServer& server, const std::string& arguments) {
    return std::system(("xrandr -d " + server.displayName() + " " + arguments).c_str()) == 0;
}

} // namespace

// A window whose colour turns is the change.
struct X11CaptureSubject {
    std::unique_ptr<X11Connection> connection = std::move(*X11Connection::open());
    QtMainQueue mainQueue;
    X11ScreenCapture x11{*connection, mainQueue};
    X11TestWindow window{{}, {0, 0, 200, 200}};
    Pixel color = 0;

    ScreenCapture& capture() { return x11; }
    void pass(double seconds) { runEventLoop(seconds); }
    bool passUntil(const std::function<bool()>& condition) { return runEventLoopUntil(condition); }
    void change() { window.fill({0, 0, 200, 200}, ++color); }
};

INSTANTIATE_TYPED_TEST_SUITE_P(X11, ScreenCaptureConformance, X11CaptureSubject);

TEST(X11ScreenCapture, IsPermittedOnPlainX11) {
    EXPECT_EQ(Capture().capture.permission(), CapturePermission::granted);
}

TEST(X11ScreenCapture, ListsDisplaysAndShownWindows) {
    Capture subject;
    const X11TestWindow window({}, {50, 50, 10, 10});
    std::optional<ShareableContent> content;
    subject.capture.shareableContent([&](const auto& answer) { content = *answer; });
    ASSERT_TRUE(runEventLoopUntil([&] { return content.has_value(); }));
    const auto screens = subject.screens();
    ASSERT_EQ(content->displays.size(), screens.size());
    for (std::size_t i = 0; i < screens.size(); ++i)
        EXPECT_EQ(content->displays[i].displayID, screens[i].id);
    EXPECT_TRUE(std::ranges::count(content->windows, ShareableWindow{window.id()}));
}

TEST(X11ScreenCapture, CopiesThePixelsExactly) {
    X11TestWindow window({}, {30, 40, 321, 203});
    const auto pixels = noise(321, 203, 1);
    window.put({0, 0, 321, 203}, pixels);
    Capture subject;
    subject.begin(plain({30, 40, 321, 203}));
    ASSERT_TRUE(subject.started.succeeded());
    ASSERT_TRUE(subject.waitForPictures(1));
    EXPECT_EQ(pixelsOf(subject.keeper->pictures().front()), pixels);

    // And again where it changes, the rest shared.
    window.fill({70, 33, 5, 5}, 0x123456);
    ASSERT_TRUE(subject.waitForPictures(2));
    const auto pictures = subject.keeper->pictures();
    EXPECT_EQ(pictures[1].pixel(70, 33), 0xFF123456);
    EXPECT_EQ(pictures[1].pixel(74, 37), 0xFF123456);
    EXPECT_EQ(pictures[1].pixel(75, 37), pixels[37 * 321 + 75]);
    EXPECT_EQ(pictures[1].blocksDiffering(pictures[0]), (std::vector<PixelRect>{{64, 32, 64, 16}}));
}

TEST(X11ScreenCapture, DeliversNothingCompleteWhileNothingChanges) {
    X11TestWindow window({}, {0, 0, 200, 200}, 0x336699);
    Capture subject;
    subject.begin(plain({0, 0, 200, 200}));
    ASSERT_TRUE(subject.waitForPictures(1));
    runEventLoop(0.2);
    const auto quiet = subject.keeper->all().size();
    EXPECT_EQ(quiet, 1u);
    // Drawing that leaves every pixel as it was is told as idle, without a picture.
    window.fill({10, 10, 50, 50}, 0x336699);
    ASSERT_TRUE(runEventLoopUntil([&] { return subject.keeper->all().size() > quiet; }));
    const auto samples = subject.keeper->all();
    EXPECT_EQ(samples.back().status, static_cast<int>(FrameStatus::idle));
    EXPECT_FALSE(samples.back().image);
    // Drawing outside the region is nothing at all.
    const X11TestWindow other({}, {300, 300, 50, 50});
    runEventLoop(0.2);
    EXPECT_EQ(subject.keeper->all().size(), samples.size());
}

TEST(X11ScreenCapture, IsBlackWhereNoMonitorIs) {
    // The root window reaches between the monitors, and there it has a colour.
    Capture subject;
    const auto screens = subject.screens();
    PixelRect all;
    for (const NativeScreen& screen : screens)
        all = all.united(screen.pixels);
    X11TestWindow window({}, {0, 0, all.width, all.height}, 0x44AA22);
    const PixelRect first = screens.front().pixels;
    subject.begin(
        plain({-20, -30, static_cast<double>(all.width) + 60, static_cast<double>(all.height) + 70}));
    ASSERT_TRUE(subject.waitForPictures(1));
    const Image picture = subject.keeper->pictures().front();
    for (int y = 0; y < picture.height(); y += 7)
        for (int x = 0; x < picture.width(); x += 7) {
            const PixelRect native{first.x - 20 + x, first.y - 30 + y, 1, 1};
            bool shown = false;
            for (const NativeScreen& screen : screens)
                shown |= !screen.pixels.intersection(native).isEmpty();
            ASSERT_EQ(picture.pixel(x, y), shown ? 0xFF44AA22 : opaque) << x << ", " << y;
        }
}

TEST(X11ScreenCapture, ScalesWhatChangesAsItScalesTheWhole) {
    constexpr int width = 400, height = 241, toWidth = 150, toHeight = 90;
    X11TestWindow window({}, {10, 20, width, height});
    auto pixels = noise(width, height, 2);
    window.put({0, 0, width, height}, pixels);
    Capture subject;
    subject.begin(captureConfiguration({10, 20, width, height}, toWidth, toHeight));
    ASSERT_TRUE(subject.waitForPictures(1));
    std::mt19937 random(3);
    for (std::size_t round = 1; round <= 8; ++round) {
        std::vector<Pixel> expected(toWidth * toHeight);
        AreaScaler({width, height}, {toWidth, toHeight})
            .scale({pixels.data(), width, height, width}, {0, 0, toWidth, toHeight}, expected.data(),
                   toWidth);
        ASSERT_EQ(pixelsOf(subject.keeper->pictures().back()), expected);
        const PixelRect rect{static_cast<int>(random() % 300), static_cast<int>(random() % 200),
                             10 + static_cast<int>(random() % 90), 10 + static_cast<int>(random() % 30)};
        const auto color = static_cast<Pixel>(random()) | opaque;
        for (int y = rect.y; y < rect.maxY(); ++y)
            std::fill_n(pixels.begin() + y * width + rect.x, rect.width, color);
        window.fill(rect, color);
        ASSERT_TRUE(subject.waitForPictures(round + 1));
    }
}

TEST(X11ScreenCapture, ShowsTheCursorWhereItIs) {
    X11TestWindow window({}, {0, 0, 300, 200}, 0x808080);
    window.setCursorShape(68); // an arrow
    window.warpPointer(100, 80);
    Capture subject;
    auto configuration = plain({50, 40, 200, 150});
    configuration.showsCursor = true;
    subject.begin(configuration);

    const auto expectedAt = [&](int x, int y) {
        xcb_connection_t* connection = window.raw();
        owned(
            xcb_xfixes_query_version_reply(connection, xcb_xfixes_query_version(connection, 4, 0), nullptr));
        const auto cursor = owned(
            xcb_xfixes_get_cursor_image_reply(connection, xcb_xfixes_get_cursor_image(connection), nullptr));
        std::vector<Pixel> pixels(200 * 150, 0xFF808080);
        const Pixel* shape = xcb_xfixes_get_cursor_image_cursor_image(cursor.get());
        bool any = false;
        for (int row = 0; row < cursor->height; ++row)
            for (int column = 0; column < cursor->width; ++column) {
                const int atX = x - cursor->xhot + column - 50, atY = y - cursor->yhot + row - 40;
                if (atX < 0 || atY < 0 || atX >= 200 || atY >= 150) continue;
                Pixel& pixel = pixels[static_cast<std::size_t>(atY * 200 + atX)];
                pixel = blended(shape[row * cursor->width + column], pixel);
                any |= pixel != 0xFF808080;
            }
        EXPECT_TRUE(any);
        return pixels;
    };
    ASSERT_TRUE(subject.waitForPictures(1));
    EXPECT_EQ(pixelsOf(subject.keeper->pictures().back()), expectedAt(100, 80));
    window.warpPointer(52, 41);
    ASSERT_TRUE(subject.waitForPictures(2));
    EXPECT_EQ(pixelsOf(subject.keeper->pictures().back()), expectedAt(52, 41));
    window.setCursorShape(34); // a cross
    ASSERT_TRUE(subject.waitForPictures(3));
    EXPECT_EQ(pixelsOf(subject.keeper->pictures().back()), expectedAt(52, 41));
    window.warpPointer(10, 10);
    ASSERT_TRUE(subject.waitForPictures(4));
    EXPECT_EQ(pixelsOf(subject.keeper->pictures().back()), std::vector<Pixel>(200 * 150, 0xFF808080));
}

TEST(X11ScreenCapture, LeavesTheCursorOutWhenAsked) {
    X11TestWindow window({}, {0, 0, 200, 200}, 0x808080);
    window.warpPointer(100, 100);
    Capture subject;
    subject.begin(plain({0, 0, 200, 200}));
    ASSERT_TRUE(subject.waitForPictures(1));
    window.warpPointer(50, 50);
    runEventLoop(0.3);
    ASSERT_EQ(subject.keeper->all().size(), 1u);
    EXPECT_EQ(pixelsOf(subject.keeper->pictures().front()), std::vector<Pixel>(200 * 200, 0xFF808080));
}

TEST(X11ScreenCapture, TakesEachPictureOfASourceOfItsRateOnce) {
    X11TestWindow window({}, {0, 0, 200, 100}, 0);
    std::vector<Pixel> expected;
    for (Pixel number = 0; number <= 30; ++number)
        expected.push_back(number);
    // On a machine that is busy otherwise, source and capture may both be held up for longer than a picture
    // stands; then it is tried again. That no picture comes twice, nor one after a later one, holds always.
    bool tookAll = false;
    for (int attempt = 0; attempt < 6 && !tookAll; ++attempt) {
        window.fill({0, 0, 200, 100}, 0);
        Capture subject;
        subject.begin(plain({0, 0, 200, 100}, 20));
        ASSERT_TRUE(subject.waitForPictures(1));
        const double begin = nowSeconds();
        for (int number = 1; number <= 30; ++number) {
            window.fill({0, 0, 200, 100}, static_cast<Pixel>(number));
            runEventLoop(std::max(begin + number * 0.05 - nowSeconds(), 0.001));
        }
        ASSERT_TRUE(subject.stop());
        std::vector<Pixel> numbers;
        for (const Image& picture : subject.keeper->pictures())
            numbers.push_back(picture.pixel(100, 50) & 0xFF);
        EXPECT_EQ(std::ranges::adjacent_find(numbers, std::ranges::greater_equal()), numbers.end());
        EXPECT_EQ(numbers.back(), 30u);
        tookAll = numbers == expected;
    }
    EXPECT_TRUE(tookAll);
}

TEST(X11ScreenCapture, TakesAFasterSourceAtItsOwnRate) {
    X11TestWindow window({}, {0, 0, 200, 100}, 0);
    Capture subject;
    subject.begin(plain({0, 0, 200, 100}, 15));
    ASSERT_TRUE(subject.waitForPictures(1));
    const double begin = nowSeconds();
    for (Pixel number = 1; nowSeconds() < begin + 2; ++number) {
        window.fill({0, 0, 200, 100}, number);
        runEventLoop(0.005);
    }
    const double lasted = nowSeconds() - begin;
    ASSERT_TRUE(subject.stop());
    const auto count = static_cast<double>(subject.keeper->pictures().size());
    EXPECT_LE(count, lasted * 15 + 3); // the first, one soon after it, and the last
    EXPECT_GE(count, lasted * 15 / 3); // a busy machine holds up the capture too
}

TEST(X11ScreenCapture, KeepsTheLastChangeBeforeTheStop) {
    X11TestWindow window({}, {0, 0, 200, 100}, 0);
    for (int round = 0; round < 5; ++round) {
        Capture subject;
        subject.begin(plain({0, 0, 200, 100}, 10));
        ASSERT_TRUE(subject.waitForPictures(1));
        // The second change comes long before its time.
        window.fill({0, 0, 200, 100}, 0x110000u + static_cast<Pixel>(round));
        ASSERT_TRUE(subject.waitForPictures(2));
        window.fill({0, 0, 200, 100}, 0x220000u + static_cast<Pixel>(round));
        ASSERT_TRUE(subject.stop());
        EXPECT_TRUE(subject.stopped.succeeded());
        EXPECT_EQ(subject.keeper->pictures().back().pixel(100, 50),
                  opaque | (0x220000u + static_cast<Pixel>(round)));
    }
}

TEST(X11ScreenCapture, KeepsTheLastChangeBeforeAPause) {
    X11TestWindow window({}, {0, 0, 200, 100}, 0);
    Capture subject;
    subject.begin(plain({0, 0, 200, 100}, 10));
    ASSERT_TRUE(subject.waitForPictures(1));
    for (Pixel number = 1; number <= 7; ++number)
        window.fill({0, 0, 200, 100}, number);
    EXPECT_TRUE(
        runEventLoopUntil([&] { return subject.keeper->pictures().back().pixel(9, 9) == (opaque | 7); }));
}

TEST(X11ScreenCapture, HoldsBackWhileTheQueueIsFullAndLosesNoState) {
    X11TestWindow window({}, {0, 0, 200, 100}, 0);
    Capture subject;
    auto configuration = plain({0, 0, 200, 100}, 30);
    configuration.queueDepth = 2;
    subject.begin(configuration);
    ASSERT_TRUE(subject.waitForPictures(1));
    std::mutex gate;
    std::unique_lock closed(gate);
    subject.queue->async([&] { const std::lock_guard wait(gate); });
    std::size_t most = 0;
    for (Pixel number = 1; number <= 40; ++number) {
        window.fill({0, 0, 200, 100}, number);
        runEventLoop(0.02);
        most = std::max(most, subject.queue->pending());
    }
    EXPECT_EQ(most, 2u);
    closed.unlock();
    EXPECT_TRUE(
        runEventLoopUntil([&] { return subject.keeper->pictures().back().pixel(9, 9) == (opaque | 40); }));
    EXPECT_LE(subject.keeper->pictures().size(), 5u);
}

TEST(X11ScreenCapture, DeliversWhatStillWaitsWhenTheStoppedStreamIsReleased) {
    X11TestWindow window({}, {0, 0, 200, 100}, 0);
    Capture subject;
    subject.begin(plain({0, 0, 200, 100}));
    ASSERT_TRUE(subject.waitForPictures(1));
    std::mutex gate;
    std::unique_lock closed(gate);
    subject.queue->async([&] { const std::lock_guard wait(gate); });
    window.fill({0, 0, 200, 100}, 0x55);
    subject.stream->stop(subject.stopped.completion());
    ASSERT_TRUE(runEventLoopUntil([&] { return subject.stopped.count > 0; }));
    subject.stream.reset();
    closed.unlock();
    subject.queue->sync([] {});
    EXPECT_EQ(subject.keeper->pictures().back().pixel(9, 9), opaque | 0x55);
}

TEST(X11ScreenCapture, RefusesADisplayThatIsNotThere) {
    Capture subject;
    subject.begin(plain({0, 0, 200, 100}), 0xFFFFFFF);
    EXPECT_TRUE(subject.started.failed());
    subject.stream->stop(subject.stopped.completion());
    EXPECT_TRUE(runEventLoopUntil([&] { return subject.stopped.count > 0; }));
    EXPECT_TRUE(subject.stopped.succeeded());
    EXPECT_EQ(subject.delegate->count, 0);
}

TEST(X11ScreenCapture, RefusesWhatItCannotDo) {
    auto audio = plain({0, 0, 200, 100});
    audio.capturesAudio = true;
    auto other = plain({0, 0, 200, 100});
    other.pixelFormat = 0x34323066;
    auto empty = plain({0, 0, 200, 100});
    empty.sourceRect.width = 0;
    for (const auto& configuration : {audio, other, empty}) {
        Capture subject;
        subject.begin(configuration);
        EXPECT_TRUE(subject.started.failed());
    }
}

TEST(X11ScreenCapture, TellsThatThePixelFormatIsUnknown) {
    const X11TestServer server("640x480x16");
    Capture subject(server.displayName());
    subject.begin(plain({0, 0, 200, 100}));
    ASSERT_TRUE(subject.started.failed());
    EXPECT_EQ(subject.started.error->localizedDescription, "This display's pixel format is not supported.");
}

TEST(X11ScreenCapture, WorksWithoutSharedMemory) {
    const X11TestServer server("800x600x24", {"-extension", "MIT-SHM"});
    X11TestWindow window(server.displayName(), {30, 40, 321, 203});
    const auto pixels = noise(321, 203, 4);
    window.put({0, 0, 321, 203}, pixels);
    Capture subject(server.displayName());
    subject.begin(plain({30, 40, 321, 203}));
    ASSERT_TRUE(subject.waitForPictures(1));
    EXPECT_EQ(pixelsOf(subject.keeper->pictures().front()), pixels);
    window.fill({70, 33, 5, 5}, 0x123456);
    ASSERT_TRUE(subject.waitForPictures(2));
    EXPECT_EQ(subject.keeper->pictures()[1].pixel(70, 33), 0xFF123456);
}

TEST(X11ScreenCapture, WorksWithoutRandRAndWithoutXInput) {
    const X11TestServer server("800x600x24", {"-extension", "RANDR"});
    X11TestWindow window(server.displayName(), {0, 0, 200, 200}, 0x112233);
    Capture subject(server.displayName());
    subject.begin(plain({0, 0, 100, 100}));
    ASSERT_TRUE(subject.waitForPictures(1));
    EXPECT_EQ(pixelsOf(subject.keeper->pictures().front()), std::vector<Pixel>(10'000, 0xFF112233));
}

TEST(X11ScreenCapture, TellsOnceThatTheServerIsGoneAndKeepsTheFrames) {
    const X11TestServer server;
    Capture subject(server.displayName());
    {
        X11TestWindow window(server.displayName(), {0, 0, 200, 200}, 0x112233);
        subject.begin(plain({0, 0, 100, 100}));
        ASSERT_TRUE(subject.waitForPictures(1));
        server.send(SIGKILL);
    }
    ASSERT_TRUE(runEventLoopUntil([&] { return subject.delegate->count > 0; }));
    EXPECT_EQ(subject.delegate->error.localizedDescription, "The display server ended the connection.");
    ASSERT_TRUE(subject.stop());
    EXPECT_TRUE(subject.stopped.succeeded());
    runEventLoop(0.05);
    EXPECT_EQ(subject.delegate->count, 1);
    EXPECT_EQ(subject.keeper->pictures().size(), 1u);
}

TEST(X11ScreenCapture, EndsEvenWhenTheServerHangs) {
    const X11TestServer server;
    X11TestWindow window(server.displayName(), {0, 0, 200, 200}, 0x112233);
    for (const bool stops : {true, false}) {
        Capture subject(server.displayName());
        auto configuration = plain({0, 0, 100, 100});
        configuration.showsCursor = true;
        subject.begin(configuration);
        ASSERT_TRUE(subject.waitForPictures(1));
        server.send(SIGSTOP);
        runEventLoop(0.3); // long enough for a question that gets no answer
        const double begin = nowSeconds();
        if (stops) {
            EXPECT_TRUE(subject.stop());
            EXPECT_TRUE(subject.stopped.succeeded());
        }
        subject.stream.reset();
        EXPECT_LT(nowSeconds() - begin, 4);
        server.send(SIGCONT);
    }
}

TEST(X11ScreenCapture, GoesOnInAnotherMode) {
    const X11TestServer server;
    ASSERT_TRUE(xrandr(server, "--newmode small 25 640 656 752 800 480 490 492 525"));
    ASSERT_TRUE(xrandr(server, "--addmode screen small"));
    X11TestWindow window(server.displayName(), {0, 0, 800, 600}, 0x00FF00);
    Capture subject(server.displayName());
    subject.begin(plain({600, 440, 100, 80}));
    ASSERT_TRUE(subject.waitForPictures(1));
    EXPECT_EQ(pixelsOf(subject.keeper->pictures().back()), std::vector<Pixel>(8000, 0xFF00FF00));
    // What is no longer on the monitor is black.
    ASSERT_TRUE(xrandr(server, "--output screen --mode small"));
    ASSERT_TRUE(runEventLoopUntil([&] {
        const Image last = subject.keeper->pictures().back();
        return last.pixel(39, 39) == 0xFF00FF00 && last.pixel(40, 39) == opaque &&
               last.pixel(39, 40) == opaque;
    }));
    window.fill({630, 470, 5, 5}, 0xFF);
    EXPECT_TRUE(
        runEventLoopUntil([&] { return subject.keeper->pictures().back().pixel(30, 30) == 0xFF0000FF; }));
    ASSERT_TRUE(subject.stop());
    EXPECT_EQ(subject.delegate->count, 0);
}

TEST(X11ScreenCapture, EndsWhenItsMonitorGoes) {
    const X11TestServer server;
    X11TestWindow window(server.displayName(), {0, 0, 800, 600}, 0x0000FF);
    ASSERT_TRUE(xrandr(server, "--setmonitor first 400/100x600/100+0+0 screen"));
    ASSERT_TRUE(xrandr(server, "--setmonitor second 400/100x600/100+400+0 none"));
    Capture subject(server.displayName());
    const auto screens = subject.screens();
    ASSERT_EQ(screens.size(), 2u);
    subject.begin(plain({10, 10, 80, 80}), screens[1].id);
    ASSERT_TRUE(subject.started.succeeded());
    ASSERT_TRUE(subject.waitForPictures(1));
    ASSERT_TRUE(xrandr(server, "--delmonitor second"));
    ASSERT_TRUE(runEventLoopUntil([&] { return subject.delegate->count > 0; }));
    EXPECT_EQ(subject.delegate->error.localizedDescription, "The recorded display is no longer there.");
    ASSERT_TRUE(subject.stop());
    EXPECT_TRUE(subject.stopped.succeeded());
    EXPECT_EQ(subject.keeper->pictures().size(), 1u);
}

TEST(X11ScreenCapture, ComesAndGoesAHundredTimes) {
    X11TestWindow window({}, {0, 0, 200, 200}, 0x112233);
    for (int round = 0; round < 100; ++round) {
        Capture subject;
        subject.stream = subject.capture.makeStream({.display = {subject.screens().front().id}},
                                                    plain({0, 0, 100, 100}), subject.delegate);
        ASSERT_TRUE(subject.stream->addOutput(subject.keeper, StreamOutputType::screen, subject.queue));
        subject.stream->start(subject.started.completion());
        // Released at every stage of the start.
        runEventLoop(round % 50 * 0.001);
        subject.stream.reset();
        EXPECT_TRUE(runEventLoopUntil([&] { return subject.started.count > 0; }));
    }
}

} // namespace clipwren
