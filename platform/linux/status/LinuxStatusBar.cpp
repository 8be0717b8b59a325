#include "platform/linux/status/LinuxStatusBar.h"

#include "platform/linux/status/LinuxStatusItem.h"
#include "platform/linux/x11/X11Screens.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>

#include <cstdio>

namespace clipwren {

namespace {

constexpr const char* summary = "Clipwren is running";
constexpr const char* body =
    "No panel shows its icon. Super+Shift+G or the command clipwren --trigger begins and ends a "
    "recording; starting Clipwren again opens its settings.";
constexpr int notificationMilliseconds = 5000;

void tellOfHiddenItem() {
    auto request = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    request << QStringLiteral("Clipwren") << 0u << QStringLiteral("clipwren") << QLatin1String(summary)
            << QLatin1String(body) << QStringList() << QVariantMap() << -1;
    auto* answer = new QDBusPendingCallWatcher(
        QDBusConnection::sessionBus().asyncCall(request, notificationMilliseconds));
    QObject::connect(answer, &QDBusPendingCallWatcher::finished, answer, [answer] {
        answer->deleteLater();
        const QDBusPendingReply<uint> reply = *answer;
        if (reply.isError()) std::fprintf(stderr, "%s. %s\n", summary, body);
    });
}

} // namespace

std::unique_ptr<StatusItem> LinuxStatusBar::makeStatusItem() {
    // One factor holds for the whole X server.
    const auto natives = screens.nativeScreens();
    return std::make_unique<LinuxStatusItem>(display, natives.empty() ? 1 : natives.front().scale,
                                             tellOfHiddenItem);
}

} // namespace clipwren
