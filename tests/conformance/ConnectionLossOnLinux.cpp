#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11HotKeys.h"
#include "platform/linux/x11/X11Screens.h"
#include "platform/linux/x11/X11Windows.h"
#include "tests/conformance/EventLoop.h"
#include "tests/conformance/WindowsConformance.h"

#include <QProcess>

#include <ctime>
#include <memory>
#include <string>

namespace clipwren {

namespace {

// An X server of the test's own.
class Server {
public:
    Server() {
        process.setStandardErrorFile(QProcess::nullDevice());
        process.start(QStringLiteral("Xvfb"),
                      {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                       QStringLiteral("0"), QStringLiteral("800x600x24"), QStringLiteral("-nolisten"),
                       QStringLiteral("tcp")});
        if (process.waitForReadyRead(10'000))
            display = QStringLiteral(":%1").arg(process.readLine().trimmed().toInt()).toStdString();
    }
    ~Server() { kill(); }
    void kill() {
        process.kill();
        process.waitForFinished(5'000);
    }

    std::string display;

private:
    QProcess process;
};

double processorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

} // namespace

TEST(ConnectionLoss, IsReportedOnceAndStopsNothing) {
    Server server;
    ASSERT_FALSE(server.display.empty());
    auto opened = X11Connection::open(server.display);
    ASSERT_TRUE(opened);
    const auto connection = std::move(*opened);
    int losses = 0;
    connection->setLossHandler([&] { ++losses; });
    X11Screens screens(*connection);
    X11HotKeys hotKeys(*connection);
    X11Windows windows(*connection, screens);
    const auto content = std::make_shared<NotingContent>();
    const auto frame = screens.screens().front().frame;
    EXPECT_EQ(frame, (Rect{0, 0, 800, 600}));
    auto window = windows.makeCoveringWindow({.contentRect = frame});
    auto veil = windows.makeCoveringWindow({.contentRect = frame, .ignoresMouseEvents = true});
    for (CoveringWindow* each : {window.get(), veil.get()}) {
        each->setContent(content);
        each->orderFrontRegardless();
    }
    const auto reference = hotKeys.registerHotKey(KeyCode::g, 0x300, {1, 1});
    ASSERT_TRUE(reference);
    auto monitor = windows.monitorKeyDown([](std::uint32_t) { return true; });
    EXPECT_TRUE(monitor);
    runEventLoop(0.05);
    EXPECT_EQ(losses, 0);

    server.kill();
    EXPECT_TRUE(runEventLoopUntil([&] { return losses > 0; }));
    const double before = processorSeconds();
    runEventLoop(0.3);
    EXPECT_LT(processorSeconds() - before, 0.1);
    EXPECT_EQ(losses, 1);
    EXPECT_TRUE(connection->isLost());

    EXPECT_TRUE(screens.screens().empty());
    EXPECT_FALSE(screens.main());
    EXPECT_EQ(screens.mainDisplayID(), 0u);
    EXPECT_FALSE(windows.makeCoveringWindow({.contentRect = frame}));
    EXPECT_FALSE(hotKeys.registerHotKey(KeyCode::g, 0x100, {1, 2}));
    hotKeys.unregisterHotKey(*reference);
    window->setHole(Rect{10, 10, 100, 100});
    window->setNeedsDisplay();
    monitor = nullptr;
    EXPECT_FALSE(windows.monitorKeyDown([](std::uint32_t) { return true; }));
    runEventLoop(0.05);
    window->orderOut();
    window = nullptr;
    veil = nullptr;
    EXPECT_EQ(losses, 1);
}

} // namespace clipwren
