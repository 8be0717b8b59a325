#include "platform/linux/qt/QtApplication.h"
#include "tests/conformance/ApplicationConformance.h"
#include "tests/conformance/EventLoop.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <functional>

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
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, ApplicationConformance, QtApplicationSubject);

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

} // namespace clipwren
