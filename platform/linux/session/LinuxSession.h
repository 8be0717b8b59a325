#pragma once

#include "platform/Session.h"
#include "platform/linux/Listeners.h"
#include "platform/linux/session/BusSignals.h"
#include "platform/linux/session/Logind.h"
#include "platform/linux/x11/X11ScreenSaver.h"

#include <QDBusConnection>
#include <QObject>

#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace clipwren {

// The session of a Linux desktop under X11: what logind on the system bus, screen savers on the session bus
// and the X server's own screen saver tell of it. Main thread only.
//
// The buses are reached on a thread of its own: neither the selector nor a recording ever waits for them.
// Where there is none, the rest works.
class LinuxSession final : public Session {
public:
    // A program that locks an idle screen by a clock of its own tells nobody. Usually it counts in minutes.
    static constexpr int usualIdleLimit = 50'000; // milliseconds

    // The connection outlives this object. When nobody has touched mouse or keyboard for `idleLimit`, in
    // milliseconds, the screen counts as about to be locked.
    explicit LinuxSession(X11Connection& connection, int idleLimit = usualIdleLimit);
    ~LinuxSession() override;
    LinuxSession(const LinuxSession&) = delete;
    LinuxSession& operator=(const LinuxSession&) = delete;

    // Listens from soon on, once; without it from the first call of another operation on, which may then miss
    // what happens in its first moment.
    void listen();

    std::unique_ptr<SessionObserver> observeWillLock(std::function<void()> handler) override;
    std::shared_ptr<ShutdownDelay> delayShutdown(const std::string& reason,
                                                 std::function<void()> willShutDown) override;

private:
    class Observer;
    void reachBuses();
    void listenToScreenSavers();
    void heardScreenSaver(const QDBusMessage& signal);

    const int idleLimit; // milliseconds
    Listeners willLock;
    X11ScreenSaver screenSaver;
    BusSignals screenSaverSignals;
    Logind logind;
    bool listens = false;
    QObject context; // what comes from the other thread hangs on
    std::thread reaching;
};

} // namespace clipwren
