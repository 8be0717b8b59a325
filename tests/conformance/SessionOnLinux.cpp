#include "platform/linux/session/LinuxSession.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11ScreenSaver.h"
#include "tests/conformance/EventLoop.h"
#include "tests/conformance/SessionConformance.h"
#include "tests/conformance/SyntheticInput.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QStringList>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

namespace clipwren {

namespace {

QDBusMessage signalWith(const char* path, const char* interface, const char* member,
                        const QVariantList& arguments = {}) {
    auto signal = QDBusMessage::createSignal(path, interface, member);
    signal.setArguments(arguments);
    return signal;
}

// Who manages sessions on the system bus, on a connection of its own.
class BusLogind : public QDBusVirtualObject {
public:
    bool refuses = false;
    bool waits = false; // with its answers
    std::vector<QDBusMessage> waiting;
    std::vector<QStringList> asked; // what each lock was asked for with

    BusLogind() {
        bus.registerVirtualObject(QStringLiteral("/org/freedesktop/login1"), this);
        EXPECT_TRUE(bus.registerService(QStringLiteral("org.freedesktop.login1")));
    }
    ~BusLogind() override {
        for (const int end : ends)
            close(end);
        QDBusConnection::disconnectFromBus(QStringLiteral("logind"));
    }

    // The locks that are held.
    int locks() {
        return static_cast<int>(std::ranges::count_if(ends, [](int end) {
            pollfd question{end, POLLIN, 0};
            return poll(&question, 1, 0) == 0;
        }));
    }
    void tell(const char* signal, bool begins) {
        EXPECT_TRUE(bus.send(
            signalWith("/org/freedesktop/login1", "org.freedesktop.login1.Manager", signal, {begins})));
    }
    void lock() {
        EXPECT_TRUE(bus.send(
            signalWith("/org/freedesktop/login1/session/_31", "org.freedesktop.login1.Session", "Lock")));
    }
    void answer(const QDBusMessage& message) {
        int pipeEnds[2]{};
        ASSERT_EQ(pipe2(pipeEnds, O_CLOEXEC), 0);
        ends.push_back(pipeEnds[0]);
        EXPECT_TRUE(bus.send(message.createReply(QVariant::fromValue(QDBusUnixFileDescriptor(pipeEnds[1])))));
        close(pipeEnds[1]);
    }

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        if (message.member() != QLatin1String("Inhibit") || refuses) return false;
        EXPECT_EQ(message.signature(), QStringLiteral("ssss"));
        QStringList texts;
        for (const auto& argument : message.arguments())
            texts << argument.toString();
        asked.push_back(texts);
        if (waits)
            waiting.push_back(message);
        else
            answer(message);
        return true;
    }

private:
    QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SystemBus, QStringLiteral("logind"));
    std::vector<int> ends; // readable when the other end has been closed
};

struct LinuxSessionSubject {
    BusLogind logind;
    std::unique_ptr<X11Connection> connection = std::move(*X11Connection::open());
    LinuxSession real{*connection};

    // A lock is asked for after signals have been: when it is there, they arrive.
    LinuxSessionSubject() {
        const auto delay = real.delayShutdown("The test begins", [] {});
        EXPECT_TRUE(runEventLoopUntil([this] { return logind.locks() == 1; }));
    }
    Session& session() { return real; }
    void willLock() { logind.lock(); }
    void willShutDown() { logind.tell("PrepareForShutdown", true); }
    int delays() { return logind.locks(); }
    bool passUntil(const std::function<bool()>& condition) { return runEventLoopUntil(condition); }
};

class LinuxSessionTest : public testing::Test {
protected:
    LinuxSessionSubject subject;
    QDBusConnection other =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("other"));
    int locks = 0;
    std::unique_ptr<SessionObserver> observer = subject.real.observeWillLock([this] { ++locks; });

    ~LinuxSessionTest() override { QDBusConnection::disconnectFromBus(QStringLiteral("other")); }

    // That many come and no more, besides one that is sure to come.
    void expectLocks(int count) {
        subject.logind.lock();
        EXPECT_TRUE(runEventLoopUntil([&] { return locks > count; }));
        runEventLoop(0.05);
        EXPECT_EQ(locks, count + 1);
        locks = 0;
    }
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, SessionConformance, LinuxSessionSubject);

TEST_F(LinuxSessionTest, AsksForADelayOfTheShutdownAlone) {
    const auto delay = subject.real.delayShutdown("A recording is not saved yet", [] {});
    ASSERT_TRUE(runEventLoopUntil([&] { return subject.logind.asked.size() == 2; }));
    EXPECT_EQ(subject.logind.asked.back(),
              (QStringList{"shutdown", "Clipwren", "A recording is not saved yet", "delay"}));
}

TEST_F(LinuxSessionTest, TellsOfSleepAndNotOfWakingUp) {
    subject.logind.tell("PrepareForSleep", true);
    subject.logind.tell("PrepareForSleep", false);
    expectLocks(1);
}

TEST_F(LinuxSessionTest, AShutdownIsNoLock) {
    subject.logind.tell("PrepareForShutdown", true);
    expectLocks(0);
}

TEST_F(LinuxSessionTest, OnAnAbandonedShutdownNothingEnds) {
    int shutdowns = 0;
    const auto delay = subject.real.delayShutdown("A test runs", [&] { ++shutdowns; });
    subject.logind.tell("PrepareForShutdown", false);
    expectLocks(0);
    EXPECT_EQ(shutdowns, 0);
}

TEST_F(LinuxSessionTest, BelievesNobodyElseOnTheSystemBus) {
    auto stranger = QDBusConnection::connectToBus(QDBusConnection::SystemBus, QStringLiteral("stranger"));
    int shutdowns = 0;
    const auto delay = subject.real.delayShutdown("A test runs", [&] { ++shutdowns; });
    EXPECT_TRUE(stranger.send(signalWith("/org/freedesktop/login1", "org.freedesktop.login1.Manager",
                                         "PrepareForShutdown", {true})));
    EXPECT_TRUE(stranger.send(
        signalWith("/org/freedesktop/login1/session/_31", "org.freedesktop.login1.Session", "Lock")));
    // The bus has passed it on before it answers this.
    stranger.call(
        QDBusMessage::createMethodCall("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetId"));
    expectLocks(0);
    EXPECT_EQ(shutdowns, 0);
    QDBusConnection::disconnectFromBus(QStringLiteral("stranger"));
}

TEST_F(LinuxSessionTest, HearsTheScreenSaverOfEachDesktop) {
    for (const char* interface :
         {"org.freedesktop.ScreenSaver", "org.gnome.ScreenSaver", "org.xfce.ScreenSaver",
          "org.mate.ScreenSaver", "org.cinnamon.ScreenSaver"}) {
        SCOPED_TRACE(interface);
        EXPECT_TRUE(other.send(signalWith("/any/path", interface, "ActiveChanged", {false})));
        EXPECT_TRUE(other.send(signalWith("/any/path", interface, "ActiveChanged", {true})));
        expectLocks(1);
    }
    for (const unsigned int status : {0u, 1u, 2u, 3u})
        EXPECT_TRUE(other.send(signalWith("/org/gnome/SessionManager/Presence",
                                          "org.gnome.SessionManager.Presence", "StatusChanged", {status})));
    expectLocks(1);
}

TEST_F(LinuxSessionTest, HearsTheScreenSaverOfTheServer) {
    xcb_connection_t* connection = subject.connection->raw();
    xcb_force_screen_saver(connection, XCB_SCREEN_SAVER_ACTIVE);
    expectLocks(1);
    xcb_force_screen_saver(connection, XCB_SCREEN_SAVER_RESET);
    subject.connection->synchronize();
    expectLocks(0);
}

TEST_F(LinuxSessionTest, ADelayThatEndsBeforeTheAnswerLeavesNothing) {
    subject.logind.waits = true;
    auto delay = subject.real.delayShutdown("A test runs", [] {});
    ASSERT_TRUE(runEventLoopUntil([&] { return !subject.logind.waiting.empty(); }));
    delay.reset();
    subject.logind.answer(subject.logind.waiting.front());
    EXPECT_TRUE(runEventLoopUntil([&] { return subject.logind.locks() == 0; }));
}

TEST_F(LinuxSessionTest, ARefusalChangesNothing) {
    subject.logind.refuses = true;
    int shutdowns = 0;
    const auto delay = subject.real.delayShutdown("A test runs", [&] { ++shutdowns; });
    expectLocks(0);
    subject.willShutDown();
    EXPECT_TRUE(runEventLoopUntil([&] { return shutdowns == 1; }));
}

TEST_F(LinuxSessionTest, MayEndBeforeTheBusIsReached) {
    for (int i = 0; i < 20; ++i) {
        LinuxSession another(*subject.connection);
        const auto itsObserver = another.observeWillLock([] {});
        const auto delay = another.delayShutdown("A test runs", [] {});
    }
    expectLocks(0);
}

TEST_F(LinuxSessionTest, ASelectionThatIsLeftAloneIsAboutToBeLocked) {
    SyntheticInput().moveTo(100, 100);
    LinuxSession session(*subject.connection, 300);
    int told = 0;
    std::unique_ptr<SessionObserver> itsObserver;
    itsObserver = session.observeWillLock([&] {
        ++told;
        itsObserver.reset();
    });
    EXPECT_TRUE(runEventLoopUntil([&] { return told == 1; }));
    runEventLoop(0.4);
    EXPECT_EQ(told, 1);
    expectLocks(0);
}

TEST(X11IdleWatch, TellsThatNobodyIsThereAndWaitsForWhoeverIs) {
    const auto connection = std::move(*X11Connection::open());
    X11ScreenSaver screenSaver(*connection);
    screenSaver.observeBegin([] {});
    SyntheticInput input;
    QElapsedTimer sinceInput;
    int told = 0;
    constexpr int limit = 400;
    const X11IdleWatch watch(screenSaver, limit, [&] {
        EXPECT_GE(sinceInput.elapsed(), limit - 20); // the server counts in its own ticks
        ++told;
    });
    for (int i = 0; i < 8; ++i) {
        input.moveTo(100 + i, 100);
        sinceInput.start();
        runEventLoop(0.1);
        EXPECT_EQ(told, 0);
    }
    EXPECT_TRUE(runEventLoopUntil([&] { return told == 1; }));
    EXPECT_LT(sinceInput.elapsed(), 5000);
}

} // namespace clipwren
