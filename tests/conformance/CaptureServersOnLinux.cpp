#include "tests/conformance/EventLoop.h"
#include "tests/conformance/X11TestCapture.h"
#include "tests/conformance/X11TestServer.h"

#include <csignal>
#include <cstdlib>

namespace clipwren {

namespace {

bool xrandr(const X11TestServer& server, const std::string& arguments) {
    return std::system(("xrandr -d " + server.displayName() + " " + arguments).c_str()) == 0;
}

} // namespace

TEST(X11CaptureServers, TellsThatThePixelFormatIsUnknown) {
    const X11TestServer server("640x480x16");
    X11TestCapture subject(server.displayName());
    subject.begin(plain({0, 0, 200, 100}));
    ASSERT_TRUE(subject.started.failed());
    EXPECT_EQ(subject.started.error->localizedDescription, "This display's pixel format is not supported.");
}

TEST(X11CaptureServers, WorksWithoutSharedMemory) {
    const X11TestServer server("800x600x24", {"-extension", "MIT-SHM"});
    X11TestWindow window(server.displayName(), {30, 40, 321, 203});
    const auto pixels = noise(321, 203, 4);
    window.put({0, 0, 321, 203}, pixels);
    X11TestCapture subject(server.displayName());
    subject.begin(plain({30, 40, 321, 203}));
    ASSERT_TRUE(subject.waitForPictures(1));
    EXPECT_EQ(pixelsOf(subject.keeper->pictures().front()), pixels);
    window.fill({70, 33, 5, 5}, 0x123456);
    ASSERT_TRUE(subject.waitForPictures(2));
    EXPECT_EQ(subject.keeper->pictures()[1].pixel(70, 33), 0xFF123456);
}

TEST(X11CaptureServers, WorksWithoutRandRAndWithoutXInput) {
    const X11TestServer server("800x600x24", {"-extension", "RANDR"});
    X11TestWindow window(server.displayName(), {0, 0, 200, 200}, 0x112233);
    X11TestCapture subject(server.displayName());
    subject.begin(plain({0, 0, 100, 100}));
    ASSERT_TRUE(subject.waitForPictures(1));
    EXPECT_EQ(pixelsOf(subject.keeper->pictures().front()), std::vector<Pixel>(10'000, 0xFF112233));
}

TEST(X11CaptureServers, TellsOnceThatTheServerIsGoneAndKeepsTheFrames) {
    const X11TestServer server;
    X11TestCapture subject(server.displayName());
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

TEST(X11CaptureServers, EndsEvenWhenTheServerHangs) {
    const X11TestServer server;
    X11TestWindow window(server.displayName(), {0, 0, 200, 200}, 0x112233);
    for (const bool stops : {true, false}) {
        X11TestCapture subject(server.displayName());
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

TEST(X11CaptureServers, GoesOnInAnotherMode) {
    const X11TestServer server;
    ASSERT_TRUE(xrandr(server, "--newmode small 25 640 656 752 800 480 490 492 525"));
    ASSERT_TRUE(xrandr(server, "--addmode screen small"));
    X11TestWindow window(server.displayName(), {0, 0, 800, 600}, 0x00FF00);
    X11TestCapture subject(server.displayName());
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

class X11CaptureOnTheSecondMonitor : public testing::Test {
protected:
    const X11TestServer server;
    X11TestWindow window{server.displayName(), {0, 0, 800, 600}, 0x0000FF};
    X11TestCapture subject{server.displayName()};

    void SetUp() override {
        ASSERT_TRUE(xrandr(server, "--setmonitor first 400/100x600/100+0+0 screen"));
        ASSERT_TRUE(xrandr(server, "--setmonitor second 400/100x600/100+400+0 none"));
        const auto screens = subject.screens();
        ASSERT_EQ(screens.size(), 2u);
        subject.begin(plain({10, 10, 80, 80}), screens[1].id);
        ASSERT_TRUE(subject.started.succeeded());
        ASSERT_TRUE(subject.waitForPictures(1));
    }
};

// Not every program changes the layout of the monitors in one step.
TEST_F(X11CaptureOnTheSecondMonitor, WaitsForItWhileItIsAwayForAMoment) {
    ASSERT_TRUE(xrandr(server, "--delmonitor second"));
    runEventLoop(0.5);
    // What is there meanwhile is on no monitor.
    window.fill({400, 0, 400, 600}, 0xFF0000);
    runEventLoop(0.3);
    EXPECT_EQ(subject.keeper->pictures().size(), 1u);
    window.fill({300, 0, 500, 600}, 0x00FF00);
    ASSERT_TRUE(xrandr(server, "--setmonitor second 500/100x600/100+300+0 none"));
    EXPECT_TRUE(subject.waitForPictures(2));
    EXPECT_EQ(pixelsOf(subject.keeper->pictures().back()), std::vector<Pixel>(6400, 0xFF00FF00));
    window.fill({320, 20, 5, 5}, 0xFF);
    EXPECT_TRUE(
        runEventLoopUntil([&] { return subject.keeper->pictures().back().pixel(10, 10) == 0xFF0000FF; }));
    ASSERT_TRUE(subject.stop());
    EXPECT_EQ(subject.delegate->count, 0);
}

TEST_F(X11CaptureOnTheSecondMonitor, EndsWhenItGoes) {
    ASSERT_TRUE(xrandr(server, "--delmonitor second"));
    ASSERT_TRUE(runEventLoopUntil([&] { return subject.delegate->count > 0; }));
    EXPECT_EQ(subject.delegate->error.localizedDescription, "The recorded display is no longer there.");
    ASSERT_TRUE(subject.stop());
    EXPECT_TRUE(subject.stopped.succeeded());
    EXPECT_EQ(subject.keeper->pictures().size(), 1u);
}

} // namespace clipwren
