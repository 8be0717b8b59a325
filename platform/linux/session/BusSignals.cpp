#include "platform/linux/session/BusSignals.h"

namespace clipwren {

bool BusSignals::listen(QDBusConnection bus, const QString& service, const QString& interface,
                        const QString& member) {
    return bus.connect(service, QString(), interface, member, this, SLOT(arrive(QDBusMessage)));
}

} // namespace clipwren
