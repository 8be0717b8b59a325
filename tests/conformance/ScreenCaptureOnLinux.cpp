#include "tests/conformance/EventLoop.h"
#include "tests/conformance/X11TestCapture.h"
#include "tests/conformance/X11TestServer.h"

#include <algorithm>
#include <functional>

namespace clipwren {

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
    EXPECT_EQ(X11TestCapture().capture.permission(), CapturePermission::granted);
}

TEST(X11ScreenCapture, ListsDisplaysAndShownWindows) {
    X11TestCapture subject;
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

TEST(X11ScreenCapture, RefusesADisplayThatIsNotThere) {
    X11TestCapture subject;
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
        X11TestCapture subject;
        subject.begin(configuration);
        EXPECT_TRUE(subject.started.failed());
    }
}

TEST(X11ScreenCapture, ComesAndGoesAHundredTimes) {
    X11TestWindow window({}, {0, 0, 200, 200}, 0x112233);
    for (int round = 0; round < 100; ++round) {
        X11TestCapture subject;
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
