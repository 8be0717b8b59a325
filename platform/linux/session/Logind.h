#pragma once

#include "platform/Session.h"
#include "platform/linux/session/BusSignals.h"

#include <QDBusConnection>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace clipwren {

// The manager of sessions and of the computer's power: org.freedesktop.login1 on the system bus. Main thread
// only but for `listen`.
//
// No call waits for an answer. Where there is no such manager, or it refuses, nothing happens.
class Logind {
public:
    // `willLock` is called from the event loop when a session is to be locked or the computer is about to
    // sleep.
    explicit Logind(std::function<void()> willLock);
    // Delays may live on.
    ~Logind();

    // Any thread, before `use`: asks the bus for signals, and may wait for it.
    void listen(const QDBusConnection& systemBus);
    // Once: from here on there is a manager to be asked. What was wished for before is asked for now.
    void use(const QDBusConnection& systemBus);

    // As in the port. The inhibitor lock that stands behind it is had when the manager has answered.
    std::shared_ptr<ShutdownDelay> delayShutdown(const std::string& reason,
                                                 std::function<void()> willShutDown);

private:
    class Delay;
    void arrived(const QDBusMessage& signal);
    void inhibit(const std::shared_ptr<Delay>& delay);

    const std::function<void()> willLock;
    std::vector<std::weak_ptr<Delay>> delays;
    std::optional<QDBusConnection> bus;
    BusSignals busSignals;
    QObject context; // what answers hang on
};

} // namespace clipwren
