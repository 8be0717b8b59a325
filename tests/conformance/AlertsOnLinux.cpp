#include "platform/linux/qt/QtAlerts.h"
#include "platform/linux/qt/QtMainQueue.h"
#include "tests/conformance/AlertsConformance.h"
#include "tests/conformance/EventLoop.h"
#include "tests/fakes/FakeServices.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>

namespace clipwren {

struct QtAlertsSubject {
    FakeLog log;
    QtAlerts real{log};
    QtMainQueue mainQueue;

    Alerts& alerts() { return real; }
    MainQueue& queue() { return mainQueue; }
    // The box is on the screen and takes keys from then on. One that does not is closed, and its test fails.
    void whenShown(const std::function<void()>& act) {
        mainQueue.async([this, act] {
            const bool isReady = runEventLoopUntil([this] {
                box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                return box && box->isActiveWindow();
            });
            EXPECT_TRUE(isReady);
            if (isReady)
                act();
            else if (box)
                box->close();
        });
    }
    void press(int index) { box->findChildren<QPushButton*>().at(index)->click(); }
    void close() { box->close(); }

    QMessageBox* box = nullptr;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, AlertsConformance, QtAlertsSubject);

struct QtAlertsTest : testing::Test, QtAlertsSubject {
    // A key that comes from the display server, as from a keyboard.
    static void typeKey(const char* name) {
        const char* script = "import sys\n"
                             "from Xlib import X, XK, display\n"
                             "from Xlib.ext import xtest\n"
                             "d = display.Display()\n"
                             "code = d.keysym_to_keycode(XK.string_to_keysym(sys.argv[1]))\n"
                             "xtest.fake_input(d, X.KeyPress, code)\n"
                             "xtest.fake_input(d, X.KeyRelease, code)\n"
                             "d.sync()\n";
        QProcess python;
        python.start(QStringLiteral("/usr/bin/python3"),
                     {QStringLiteral("-c"), QString::fromLatin1(script), QString::fromLatin1(name)});
        ASSERT_TRUE(python.waitForFinished(10'000));
        ASSERT_EQ(python.exitCode(), 0) << python.readAllStandardError().toStdString();
    }
};

TEST_F(QtAlertsTest, TheKeyboardIsItsOwnWithoutAClick) {
    whenShown([] { typeKey("Return"); });
    EXPECT_EQ(real.runModal({"Clipwren", "text", AlertStyle::warning, {"Quit & Reopen", "Later"}}), 0);
    whenShown([] { typeKey("Escape"); });
    EXPECT_EQ(real.runModal({"Clipwren", "text", AlertStyle::warning, {"Quit & Reopen", "Later"}}), 1);
}

TEST_F(QtAlertsTest, ShowsTheTextsAsTheyStand) {
    whenShown([this] {
        EXPECT_EQ(box->windowTitle(), QStringLiteral("Clipwren"));
        EXPECT_EQ(box->icon(), QMessageBox::Warning);
        EXPECT_EQ(box->text(), QStringLiteral("Clipwren"));
        EXPECT_EQ(box->informativeText(), QStringLiteral("Could not save GIF: 5 < 6 & 7"));
        EXPECT_EQ(box->buttons().size(), 1);
        EXPECT_EQ(box->buttons().front()->text().remove(QLatin1Char('&')), QStringLiteral("OK"));
        press(0);
    });
    real.runModal({"Clipwren", "Could not save GIF: 5 < 6 & 7"});

    whenShown([this] {
        EXPECT_FALSE(box->informativeText().contains(QStringLiteral("<b>"))) << "would be bold";
        EXPECT_TRUE(box->informativeText().contains(QStringLiteral("&lt;b&gt;")));
        press(0);
    });
    real.runModal({"Clipwren", "a <b>bold</b> file name"});
}

TEST_F(QtAlertsTest, EndsWithTheProgramsEventLoop) {
    QtMainQueue& queue = mainQueue;
    int answer = -1;
    queue.async([&] { answer = real.runModal({"Clipwren", "text"}); });
    whenShown([] { QCoreApplication::exit(7); });
    EXPECT_EQ(QCoreApplication::exec(), 7);
    EXPECT_EQ(answer, 0);
}

} // namespace clipwren
