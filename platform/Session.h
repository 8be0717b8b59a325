#pragma once

#include <functional>
#include <memory>
#include <string>

namespace clipwren {

// A running observation; destroying it ends it, which may happen inside its own handler.
class SessionObserver {
public:
    virtual ~SessionObserver() = default;
};

// Holds up the end of the computer's work as long as it lives. May be destroyed on any thread.
class ShutdownDelay {
public:
    virtual ~ShutdownDelay() = default;
};

// The user's session at the computer, and what is about to happen to it. Main thread only; no call waits for
// an answer from elsewhere.
class Session {
public:
    virtual ~Session() = default;

    // Calls the handler, later, on the main queue, each time the screen is about to be locked or the computer
    // to sleep, as early as the platform can tell; also when nobody was going to. A locker that finds the
    // keyboard or the pointer taken does not lock: whoever has them gives them back then. Where nothing tells
    // of it, the handler is never called.
    virtual std::unique_ptr<SessionObserver> observeWillLock(std::function<void()> handler) = 0;

    // Asks that the computer be not switched off before the returned object has gone. The platform decides
    // how long it waits, usually some seconds, and may not wait at all; nobody is told of that. `reason` is a
    // sentence for people who ask what holds the computer up.
    //
    // `willShutDown` is called at most once, later, on the main queue, when the computer is about to be
    // switched off while the object lives. The object is never null.
    virtual std::shared_ptr<ShutdownDelay> delayShutdown(const std::string& reason,
                                                         std::function<void()> willShutDown) = 0;
};

} // namespace clipwren
