#include "platform/linux/status/DBusObject.h"

#include <QDBusError>
#include <QDBusVariant>

namespace clipwren {

bool answerProperties(const QDBusMessage& message, const QDBusConnection& connection,
                      const QString& interface, const QVariantMap& properties) {
    if (message.interface() != QLatin1String("org.freedesktop.DBus.Properties")) return false;
    const QVariantList arguments = message.arguments();
    const bool isOurs = arguments.value(0).toString() == interface || arguments.value(0).toString().isEmpty();
    if (message.member() == QLatin1String("GetAll"))
        return connection.send(message.createReply(isOurs ? properties : QVariantMap()));
    if (message.member() == QLatin1String("Set"))
        return connection.send(message.createErrorReply(QDBusError::PropertyReadOnly,
                                                        QStringLiteral("The property is read-only.")));
    if (message.member() != QLatin1String("Get")) return false;
    const auto found = properties.find(arguments.value(1).toString());
    if (!isOurs || found == properties.end())
        return connection.send(message.createErrorReply(QDBusError::UnknownProperty,
                                                        QStringLiteral("There is no such property.")));
    return connection.send(message.createReply(QVariant::fromValue(QDBusVariant(*found))));
}

} // namespace clipwren
