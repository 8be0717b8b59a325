#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>

#include <functional>

namespace clipwren {

// Hears signals on message buses. The handler is called from the event loop of the thread that made this
// object.
class BusSignals : public QObject {
    Q_OBJECT

public:
    using Handler = std::function<void(const QDBusMessage& signal)>;

    explicit BusSignals(Handler handler) : handler(std::move(handler)) {}

    // From any object of the service, which is not started for it. Without a name: of everyone on the bus.
    // Any thread, while this object lives; waits for the bus to tell who has the name.
    bool listen(QDBusConnection bus, const QString& service, const QString& interface, const QString& member);

    // What the bus library calls.
    Q_SLOT void arrive(const QDBusMessage& signal) { handler(signal); }

private:
    const Handler handler;
};

} // namespace clipwren
