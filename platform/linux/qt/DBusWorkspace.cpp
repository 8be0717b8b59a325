#include "platform/linux/qt/DBusWorkspace.h"

#include "platform/linux/FileUri.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QProcess>
#include <QStringList>

namespace clipwren {

void DBusWorkspace::openFolder(const std::filesystem::path& folder) {
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowFolders"));
    const QString startupIdentifier;
    call << QStringList{QString::fromStdString(fileUri(folder))} << startupIdentifier;

    constexpr int longestWait = 10'000; // ms; a file manager may first have to be started
    auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call, longestWait));
    const auto path = QString::fromStdString(folder.string());
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, path] {
        if (QDBusPendingReply<>(*watcher).isError())
            QProcess::startDetached(QStringLiteral("xdg-open"), {path});
        watcher->deleteLater();
    });
}

} // namespace clipwren
