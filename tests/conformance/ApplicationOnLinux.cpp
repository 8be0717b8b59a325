#include "platform/linux/Files.h"
#include "platform/linux/LocalClock.h"
#include "platform/linux/OwnExecutable.h"
#include "platform/linux/qt/QtApplication.h"
#include "tests/conformance/ApplicationConformance.h"
#include "tests/conformance/Environment.h"
#include "tests/conformance/EventLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <QApplication>
#include <QMessageBox>
#include <QTimer>
#include <QWidget>

#include <functional>

#include <sys/stat.h>
#include <unistd.h>

namespace clipwren {

struct QtApplicationSubject {
    QtApplication real;

    Application& application() { return real; }
    bool runEnds(const std::function<void()>& work) {
        constexpr int tooLate = 1;
        QTimer limit;
        limit.setSingleShot(true);
        QObject::connect(&limit, &QTimer::timeout, [] { QCoreApplication::exit(tooLate); });
        limit.start(300);
        QTimer::singleShot(0, work);
        return QCoreApplication::exec() == 0;
    }
    // By the window manager: the focus goes nowhere while the only window is away.
    void comeBack() {
        QWidget window;
        window.setGeometry(100, 100, 200, 100);
        window.show();
        EXPECT_TRUE(runEventLoopUntil([&] { return window.isActiveWindow(); }));
        window.hide();
        EXPECT_TRUE(runEventLoopUntil([] { return !QGuiApplication::focusWindow(); }));
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, ApplicationConformance, QtApplicationSubject);

TEST(QtApplication, TellsThatTheUserIsBackAfterAMessageBox) {
    QtApplicationSubject subject;
    QMessageBox box;
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, &box, [&] {
        if (box.isActiveWindow()) box.accept();
    });
    answer.start(10);
    box.exec();
    int calls = 0;
    const auto observer = subject.real.observeDidBecomeActive([&] { ++calls; });
    subject.comeBack();
    EXPECT_EQ(calls, 1);
}

TEST(QtApplication, TerminateEndsNestedLoopsToo) {
    QtApplicationSubject subject;
    EXPECT_TRUE(subject.runEnds([&] {
        subject.real.terminate();
        runEventLoop(5);
    }));
}

TEST(QtApplication, TerminateCountsBeforeTheLoopBegins) {
    QtApplicationSubject subject;
    subject.real.terminate();
    EXPECT_TRUE(subject.runEnds([] {}));
}

TEST(QtApplication, BringsItsWindowsToTheFront) {
    QWidget first, second;
    for (QWidget* window : {&first, &second}) {
        window->setGeometry(100, 100, 200, 100);
        window->show();
        ASSERT_TRUE(runEventLoopUntil([&] { return window->isActiveWindow(); }));
    }
    second.hide();
    QtApplication().activateIgnoringOtherApps();
    EXPECT_TRUE(runEventLoopUntil([&] { return first.isActiveWindow(); }));
}

// The time is that of the file, in the time zone as it is now.
TEST(QtApplication, KnowsWhenItWasBuilt) {
    struct stat status{};
    ASSERT_EQ(stat("/proc/self/exe", &status), 0);
    for (const char* zone : {"UTC", "Asia/Kolkata", "America/New_York"}) {
        const Environment environment("TZ", zone);
        EXPECT_EQ(QtApplication().bundleFacts().executableModificationTime, localTime(status.st_mtime));
    }
}

TEST(QtApplication, RunsShellCommandsOnTheirOwn) {
    const TemporaryFolder folder;
    const auto file = folder.path() / "it's $HOME";
    QtApplication().startShellCommand("sleep 0.2; echo \"$PPID\" > " + shellQuoted(file.string()));
    EXPECT_EQ(readSmallFile(file, 100), std::nullopt);
    ASSERT_TRUE(runEventLoopUntil([&] { return !readSmallFile(file, 100).value_or("").empty(); }));
    EXPECT_NE(readSmallFile(file, 100), std::to_string(getpid()) + "\n");
}

TEST(QtApplication, IsLaunchedByItsOwnQuotedPath) {
    const auto program = std::filesystem::read_symlink("/proc/self/exe").string();
    EXPECT_EQ(QtApplication().launchCommand(), "exec " + shellQuoted(program));
}

} // namespace clipwren
