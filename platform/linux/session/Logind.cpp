#include "platform/linux/session/Logind.h"

#include "platform/linux/Descriptor.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>

#include <fcntl.h>
#include <utility>

namespace clipwren {

namespace {

const QString service = QStringLiteral("org.freedesktop.login1");
const QString managerPath = QStringLiteral("/org/freedesktop/login1");
const QString managerInterface = QStringLiteral("org.freedesktop.login1.Manager");
const QString sessionInterface = QStringLiteral("org.freedesktop.login1.Session");
const QString lockSignal = QStringLiteral("Lock");
const QString sleepSignal = QStringLiteral("PrepareForSleep");
const QString shutdownSignal = QStringLiteral("PrepareForShutdown");

} // namespace

// Changed on the main thread only, while somebody there holds it; destroyed on any.
class Logind::Delay final : public ShutdownDelay {
public:
    Delay(std::string reason, std::function<void()> willShutDown)
        : reason(std::move(reason)),
          willShutDown(std::move(willShutDown)) {}

    const std::string reason;
    std::function<void()> willShutDown;  // until it has been called
    std::optional<Descriptor> inhibitor; // which the manager waits for until it is closed
};

Logind::Logind(std::function<void()> willLock)
    : willLock(std::move(willLock)),
      busSignals([this](const QDBusMessage& signal) { arrived(signal); }) {}

Logind::~Logind() = default;

// From this service alone: on the system bus, programs of other users speak too.
void Logind::listen(const QDBusConnection& systemBus) {
    busSignals.listen(systemBus, service, sessionInterface, lockSignal);
    busSignals.listen(systemBus, service, managerInterface, sleepSignal);
    busSignals.listen(systemBus, service, managerInterface, shutdownSignal);
}

void Logind::use(const QDBusConnection& systemBus) {
    bus = systemBus;
    for (const auto& waiting : std::vector(delays))
        if (const auto delay = waiting.lock()) inhibit(delay);
}

std::shared_ptr<ShutdownDelay> Logind::delayShutdown(const std::string& reason,
                                                     std::function<void()> willShutDown) {
    auto delay = std::make_shared<Delay>(reason, std::move(willShutDown));
    std::erase_if(delays, [](const auto& known) { return known.expired(); });
    delays.push_back(delay);
    if (bus) inhibit(delay);
    return delay;
}

void Logind::arrived(const QDBusMessage& signal) {
    const bool begins = signal.arguments().value(0).toBool();
    if (signal.member() == lockSignal) {
        // Of whichever session. Which one the display belongs to is not certain: a program may have been
        // started from another one, or from none. To end a selection for nothing does less harm than to leave
        // a screen unlocked.
        willLock();
    } else if (signal.member() == sleepSignal) {
        if (begins) willLock();
    } else if (begins) {
        for (const auto& candidate : std::vector(delays))
            if (const auto delay = candidate.lock())
                if (const auto tell = std::exchange(delay->willShutDown, nullptr)) tell();
    }
}

void Logind::inhibit(const std::shared_ptr<Delay>& delay) {
    auto request =
        QDBusMessage::createMethodCall(service, managerPath, managerInterface, QStringLiteral("Inhibit"));
    request << QStringLiteral("shutdown") << QStringLiteral("Clipwren")
            << QString::fromStdString(delay->reason) << QStringLiteral("delay");
    request.setAutoStartService(false);
    auto* answer = new QDBusPendingCallWatcher(bus->asyncCall(request), &context);
    QObject::connect(
        answer, &QDBusPendingCallWatcher::finished, &context, [answer, weakDelay = std::weak_ptr(delay)] {
            answer->deleteLater();
            const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *answer;
            const auto asked = weakDelay.lock();
            // The bus library has a descriptor of its own, which it closes with the answer.
            if (asked && reply.isValid() && reply.value().isValid())
                asked->inhibitor.emplace(fcntl(reply.value().fileDescriptor(), F_DUPFD_CLOEXEC, 0));
        });
}

} // namespace clipwren
