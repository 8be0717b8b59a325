#include "tests/conformance/EventLoop.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <cmath>

namespace clipwren {

void runEventLoop(double seconds) {
    QEventLoop loop;
    QTimer end;
    end.setTimerType(Qt::PreciseTimer);
    end.setSingleShot(true);
    QObject::connect(&end, &QTimer::timeout, &loop, &QEventLoop::quit);
    end.start(static_cast<int>(std::ceil(seconds * 1000)));
    loop.exec();
}

bool runEventLoopUntil(const std::function<bool()>& condition) {
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.hasExpired(10'000)) return false;
        runEventLoop(0.005);
    }
    return true;
}

} // namespace clipwren
