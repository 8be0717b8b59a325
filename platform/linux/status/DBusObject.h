#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariantMap>

namespace clipwren {

// Answers the standard interface for properties, all of them read-only, of one interface. False when the
// message asks for something else.
bool answerProperties(const QDBusMessage& message, const QDBusConnection& connection,
                      const QString& interface, const QVariantMap& properties);

} // namespace clipwren
