#include "platform/linux/capture/AreaScaler.h"
#include "platform/linux/capture/CursorImage.h"
#include "platform/linux/x11/X11Reply.h"
#include "tests/conformance/EventLoop.h"
#include "tests/conformance/X11TestCapture.h"
#include "tests/conformance/X11TestServer.h"

#include <xcb/xfixes.h>

#include <algorithm>
#include <random>

namespace clipwren {

TEST(X11CapturedPictures, CopiesThePixelsExactly) {
    X11TestWindow window({}, {30, 40, 321, 203});
    const auto pixels = noise(321, 203, 1);
    window.put({0, 0, 321, 203}, pixels);
    X11TestCapture subject;
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

// A caret is expected at its place, and may be somewhere else all the same, or not alone.
TEST(X11CapturedPictures, FollowsWhatIsSmallWhereverItIs) {
    constexpr int width = 400, height = 240;
    X11TestWindow window({}, {10, 20, width, height}, 0xFFFFFF);
    std::vector<Pixel> pixels(width * height, 0xFFFFFFFF);
    X11TestCapture subject;
    subject.begin(plain({10, 20, width, height}));
    ASSERT_TRUE(subject.waitForPictures(1));
    const auto fill = [&](const PixelRect& rect, Pixel color) {
        for (int y = rect.y; y < rect.maxY(); ++y)
            std::fill_n(pixels.begin() + y * width + rect.x, rect.width, color | opaque);
        window.fill(rect, color);
    };
    for (int round = 1; round <= 16; ++round) {
        const bool isElsewhere = round % 4 == 3;
        if (!isElsewhere) fill({100, 100, 2, 14}, round % 2 == 0 ? 0xFFFFFF : 0);
        if (round % 4 >= 2) fill({round * 20, round * 13, 9, 9}, static_cast<Pixel>(round * 0x123));
        if (round == 12) fill({0, 0, width, height}, 0x777777);
        EXPECT_TRUE(runEventLoopUntil([&] { return pixelsOf(subject.keeper->pictures().back()) == pixels; }))
            << round;
    }
}

TEST(X11CapturedPictures, DeliversNothingCompleteWhileNothingChanges) {
    X11TestWindow window({}, {0, 0, 200, 200}, 0x336699);
    X11TestCapture subject;
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

TEST(X11CapturedPictures, IsBlackWhereNoMonitorIs) {
    // The root window reaches between the monitors, and there it has a colour.
    X11TestCapture subject;
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

TEST(X11CapturedPictures, ScalesWhatChangesAsItScalesTheWhole) {
    constexpr int width = 400, height = 241, toWidth = 150, toHeight = 90;
    X11TestWindow window({}, {10, 20, width, height});
    auto pixels = noise(width, height, 2);
    window.put({0, 0, width, height}, pixels);
    X11TestCapture subject;
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

TEST(X11CapturedPictures, ShowsTheCursorWhereItIs) {
    X11TestWindow window({}, {0, 0, 300, 200}, 0x808080);
    window.setCursorShape(68); // an arrow
    window.warpPointer(100, 80);
    X11TestCapture subject;
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

TEST(X11CapturedPictures, LeavesTheCursorOutWhenAsked) {
    X11TestWindow window({}, {0, 0, 200, 200}, 0x808080);
    window.warpPointer(100, 100);
    X11TestCapture subject;
    subject.begin(plain({0, 0, 200, 200}));
    ASSERT_TRUE(subject.waitForPictures(1));
    window.warpPointer(50, 50);
    runEventLoop(0.3);
    ASSERT_EQ(subject.keeper->all().size(), 1u);
    EXPECT_EQ(pixelsOf(subject.keeper->pictures().front()), std::vector<Pixel>(200 * 200, 0xFF808080));
}

} // namespace clipwren
