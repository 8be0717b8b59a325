#include "platform/linux/status/ItemHost.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <utility>

namespace clipwren {

namespace {

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");

} // namespace

ItemHost::ItemHost(QDBusConnection connection, std::function<void()> changed)
    : bus(std::move(connection)),
      changed(std::move(changed)),
      watcher(watcherName, bus, QDBusServiceWatcher::WatchForOwnerChange) {
    QObject::connect(
        &watcher, &QDBusServiceWatcher::serviceOwnerChanged, &watcher,
        [this](const QString&, const QString&, const QString& owner) { setPresent(!owner.isEmpty()); });
    auto question = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameHasOwner"));
    question << watcherName;
    auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(question), &watcher);
    QObject::connect(answer, &QDBusPendingCallWatcher::finished, &watcher, [this, answer] {
        answer->deleteLater();
        const QDBusPendingReply<bool> reply = *answer;
        if (!present && reply.isValid() && reply.value()) setPresent(true);
    });
}

void ItemHost::setPresent(bool isThere) {
    present = isThere;
    changed();
}

} // namespace clipwren
