#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11HotKeys.h"
#include "platform/linux/x11/X11KeyMonitor.h"
#include "tests/conformance/EventLoop.h"
#include "tests/conformance/HotKeysConformance.h"
#include "tests/conformance/SyntheticInput.h"

#include <QProcess>

#include <memory>

namespace clipwren {

namespace {

constexpr double arrival = 0.05; // seconds in which events have surely come

struct X11Subject {
    std::unique_ptr<X11Connection> connection = std::move(*X11Connection::open());
    X11HotKeys x11HotKeys{*connection};
    X11KeyboardGrab keyboardGrab{*connection};
    SyntheticInput user;

    HotKeys& hotKeys() { return x11HotKeys; }
    void press(std::uint32_t modifiers) {
        hold(modifiers);
        user.tap(SyntheticInput::physicalG);
        letGo(modifiers);
        runEventLoop(arrival);
    }
    void hold(std::uint32_t modifiers) {
        if ((modifiers & HotKeyModifiers::command) != 0) user.keyDown(SyntheticInput::superLeft);
        if ((modifiers & HotKeyModifiers::shift) != 0) user.keyDown(SyntheticInput::shiftLeft);
    }
    void letGo(std::uint32_t modifiers) {
        if ((modifiers & HotKeyModifiers::shift) != 0) user.keyUp(SyntheticInput::shiftLeft);
        if ((modifiers & HotKeyModifiers::command) != 0) user.keyUp(SyntheticInput::superLeft);
    }
};

void setLayout(const char* layout) {
    QProcess::execute(QStringLiteral("setxkbmap"), {QString::fromLatin1(layout)});
}

class X11HotKeysTest : public testing::Test {
protected:
    static constexpr std::uint32_t both = HotKeyModifiers::command | HotKeyModifiers::shift;
    X11Subject subject;
    int presses = 0;

    X11HotKeysTest() {
        subject.x11HotKeys.installEventHandler([this](std::optional<HotKeyID>) { ++presses; });
        EXPECT_TRUE(subject.x11HotKeys.registerHotKey(KeyCode::g, both, {1, 1}));
    }
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(X11, HotKeysConformance, X11Subject);

TEST_F(X11HotKeysTest, IsPressedUnderEveryLock) {
    for (const std::uint8_t lock : {SyntheticInput::capsLock, SyntheticInput::numLock}) {
        presses = 0;
        subject.user.tap(lock);
        subject.press(both);
        EXPECT_EQ(presses, 1);
    }
    presses = 0;
    subject.press(both); // both locks are on
    EXPECT_EQ(presses, 1);
    subject.user.tap(SyntheticInput::capsLock);
    presses = 0;
    subject.press(both);
    EXPECT_EQ(presses, 1);
    subject.user.tap(SyntheticInput::numLock);
}

TEST_F(X11HotKeysTest, IsNotPressedAgainByAHeldKey) {
    subject.hold(both);
    subject.user.keyDown(SyntheticInput::physicalG);
    runEventLoop(1.2); // The server repeats it after 0.66 seconds, 25 times a second.
    EXPECT_EQ(presses, 1);
    subject.user.keyUp(SyntheticInput::physicalG);
    subject.user.tap(SyntheticInput::physicalG);
    subject.letGo(both);
    runEventLoop(arrival);
    EXPECT_EQ(presses, 2);
}

TEST_F(X11HotKeysTest, IsHeardWhileKeysAreMonitored) {
    int monitored = 0;
    auto monitor =
        X11KeyMonitor::create(*subject.connection, subject.keyboardGrab, [&](std::uint32_t keyCode) {
            monitored += keyCode == KeyCode::g ? 1 : 0;
            return false;
        });
    ASSERT_TRUE(monitor);
    subject.press(both);
    EXPECT_EQ(presses, 1);
    subject.press(0);
    EXPECT_EQ(presses, 1);
    EXPECT_EQ(monitored, 1);
}

TEST_F(X11HotKeysTest, IsHeardAgainAfterAGrabEndedWhileItWasDown) {
    auto monitor =
        X11KeyMonitor::create(*subject.connection, subject.keyboardGrab, [](std::uint32_t) { return false; });
    ASSERT_TRUE(monitor);
    subject.x11HotKeys.installEventHandler([&](std::optional<HotKeyID>) {
        ++presses;
        monitor = nullptr;
    });
    subject.hold(both);
    subject.user.keyDown(SyntheticInput::physicalG);
    runEventLoop(arrival);
    EXPECT_EQ(presses, 1);
    subject.user.keyUp(SyntheticInput::physicalG); // Goes to whoever has the focus.
    runEventLoop(arrival);
    subject.user.tap(SyntheticInput::physicalG);
    subject.letGo(both);
    runEventLoop(arrival);
    EXPECT_EQ(presses, 2);
}

TEST_F(X11HotKeysTest, StaysAtItsPlaceUnderOtherLayouts) {
    for (const char* layout : {"us(dvorak)", "ru", "fr", "us"}) {
        setLayout(layout);
        runEventLoop(0.2);
        presses = 0;
        subject.press(both);
        EXPECT_EQ(presses, 1) << layout;
    }
}

TEST_F(X11HotKeysTest, RefusesWhatAnotherProgramHas) {
    X11Subject other;
    EXPECT_FALSE(other.x11HotKeys.registerHotKey(KeyCode::g, both, {1, 9}));
    // Nothing of the refused one stays behind: after the first gives way it is free in all states of the
    // locks.
    subject.x11HotKeys.unregisterHotKey(1);
    const auto reference = other.x11HotKeys.registerHotKey(KeyCode::g, both, {1, 9});
    EXPECT_TRUE(reference);
}

TEST_F(X11HotKeysTest, RefusesWhatItDoesNotKnow) {
    EXPECT_FALSE(subject.x11HotKeys.registerHotKey(6, both, {1, 2}));
    EXPECT_FALSE(subject.x11HotKeys.registerHotKey(KeyCode::g, both | 0x800, {1, 2}));
}

} // namespace clipwren
