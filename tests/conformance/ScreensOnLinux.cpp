#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Screens.h"
#include "tests/conformance/EventLoop.h"
#include "tests/conformance/ScreensConformance.h"

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <utility>

namespace clipwren {

namespace {

struct X11Subject {
    std::unique_ptr<X11Connection> connection = std::move(*X11Connection::open());
    X11Screens x11Screens{*connection};
    bool isPlugged = false;

    ~X11Subject() {
        if (isPlugged) plug();
    }
    Screens& screens() { return x11Screens; }
    // Apart from the others, so that none mirrors another.
    void plug() {
        const bool wasPlugged = std::exchange(isPlugged, !isPlugged);
        const int status = std::system(wasPlugged ? "xrandr --delmonitor EXTRA"
                                                  : "xrandr --setmonitor EXTRA 64/17x64/17+1850+1010 none");
        EXPECT_EQ(status, 0);
    }
    bool passUntil(const std::function<bool()>& condition) { return runEventLoopUntil(condition); }
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(X11, ScreensConformance, X11Subject);

TEST(X11Screens, FollowsThePointer) {
    X11Subject subject;
    const auto natives = subject.x11Screens.nativeScreens();
    ASSERT_FALSE(natives.empty());
    xcb_connection_t* connection = subject.connection->raw();
    for (const NativeScreen& screen : natives) {
        xcb_warp_pointer(connection, XCB_NONE, subject.connection->root(), 0, 0, 0, 0,
                         static_cast<std::int16_t>(screen.pixels.x + 5),
                         static_cast<std::int16_t>(screen.pixels.y + 5));
        EXPECT_EQ(subject.x11Screens.main()->screenNumber, screen.id);
    }
}

TEST(X11Screens, AreTheSameForEveryConnection) {
    X11Subject one, other;
    const auto first = one.x11Screens.nativeScreens();
    const auto second = readScreens(other.connection->raw(), other.connection->screen());
    ASSERT_EQ(first.size(), second.size());
    for (std::size_t i = 0; i < first.size(); ++i) {
        EXPECT_EQ(first[i].id, second[i].id);
        EXPECT_EQ(first[i].pixels, second[i].pixels);
    }
}

TEST(X11Connection, AnswersUnreachableServersWithAnError) {
    const auto connection = X11Connection::open(":9876");
    ASSERT_FALSE(connection);
    EXPECT_FALSE(connection.error().localizedDescription.empty());
}

} // namespace clipwren
