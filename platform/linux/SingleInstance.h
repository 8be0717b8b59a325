#pragma once

#include "base/Expected.h"
#include "platform/ScreenCapture.h"

#include <QDBusVirtualObject>

#include <functional>
#include <string>

namespace clipwren {

// The one Clipwren of a session, which others reach on the session bus: the name app.clipwren.Clipwren with
// the interface org.freedesktop.Application. Main thread only.
class SingleInstance final : public QDBusVirtualObject {
public:
    // What others may ask for; called from the event loop.
    struct Handlers {
        std::function<void()> activate; // the program was started once more
        std::function<void()> trigger;
        std::function<void()> quit;
    };
    enum class Claim {
        granted,
        taken, // another one runs
        alone, // there is no session bus: nobody can be reached, but no other one runs either
    };

    explicit SingleInstance(Handlers handlers) : handlers(std::move(handlers)) {}
    // Gives the name up.
    ~SingleInstance() override;

    // Once. Where there is no bus a lock in the session's runtime folder stands in for the name.
    Claim claim();

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    static bool lock();

    const Handlers handlers;
    bool ownsName = false;
};

// Asks the running Clipwren for something. Quitting returns when it has gone. An error is a sentence for the
// user. Needs a QCoreApplication; waits some seconds at most.
Expected<void, PlatformError> activateRunningInstance();
Expected<void, PlatformError> triggerRunningInstance();
Expected<void, PlatformError> quitRunningInstance();

} // namespace clipwren
