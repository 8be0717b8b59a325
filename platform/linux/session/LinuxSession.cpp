#include "platform/linux/session/LinuxSession.h"

#include "platform/linux/session/BusProbe.h"

#include <array>
#include <optional>
#include <utility>

namespace clipwren {

namespace {

const QString systemBusName = QStringLiteral("clipwren session");
constexpr int answerMilliseconds = 1000;

// Desktops have one each; what they tell is the same.
constexpr std::array screenSavers{"org.freedesktop.ScreenSaver", "org.gnome.ScreenSaver",
                                  "org.cinnamon.ScreenSaver", "org.mate.ScreenSaver", "org.xfce.ScreenSaver"};
const QString screenSaverChange = QStringLiteral("ActiveChanged");
// What the savers of some of them wait for: the session manager's word that nobody is there.
const QString presence = QStringLiteral("org.gnome.SessionManager.Presence");
const QString presenceChange = QStringLiteral("StatusChanged");
constexpr unsigned int idlePresence = 3;

} // namespace

class LinuxSession::Observer final : public SessionObserver {
public:
    Observer(LinuxSession& session, const std::function<void()>& handler)
        : subscription(session.willLock.subscribe(handler)),
          idleWatch(session.screenSaver, session.idleLimit, handler) {}

private:
    const Listeners::Subscription subscription;
    const X11IdleWatch idleWatch;
};

LinuxSession::LinuxSession(X11Connection& connection, int idleLimit)
    : idleLimit(idleLimit),
      screenSaver(connection),
      screenSaverSignals([this](const QDBusMessage& signal) { heardScreenSaver(signal); }),
      logind([this] { willLock.tell(); }) {}

LinuxSession::~LinuxSession() {
    if (reaching.joinable()) reaching.join();
    if (listens) QDBusConnection::disconnectFromBus(systemBusName);
}

std::unique_ptr<SessionObserver> LinuxSession::observeWillLock(std::function<void()> handler) {
    listen();
    return std::make_unique<Observer>(*this, handler);
}

std::shared_ptr<ShutdownDelay> LinuxSession::delayShutdown(const std::string& reason,
                                                           std::function<void()> willShutDown) {
    listen();
    return logind.delayShutdown(reason, std::move(willShutDown));
}

void LinuxSession::listen() {
    if (std::exchange(listens, true)) return;
    screenSaver.observeBegin([this] { willLock.tell(); });
    reachBuses();
}

// Once: a system bus that is not there when the desktop is comes no more.
void LinuxSession::reachBuses() {
    reaching = std::thread([this] {
        listenToScreenSavers();
        std::optional<QDBusConnection> systemBus;
        if (busAnswers(systemBusAddress(), answerMilliseconds))
            systemBus = QDBusConnection::connectToBus(QDBusConnection::SystemBus, systemBusName);
        const bool isThere = systemBus && systemBus->isConnected();
        if (isThere) logind.listen(*systemBus);
        const auto reached = [this, systemBus, isThere] {
            reaching.join();
            if (isThere) logind.use(*systemBus);
        };
        QMetaObject::invokeMethod(&context, reached, Qt::QueuedConnection);
    });
}

// Without the names of services, which the bus would have to be asked for one by one: in a session all
// programs are the user's own.
void LinuxSession::listenToScreenSavers() {
    const auto sessionBus = QDBusConnection::sessionBus();
    if (!sessionBus.isConnected()) return;
    for (const char* interface : screenSavers)
        screenSaverSignals.listen(sessionBus, QString(), QString::fromLatin1(interface), screenSaverChange);
    screenSaverSignals.listen(sessionBus, QString(), presence, presenceChange);
}

void LinuxSession::heardScreenSaver(const QDBusMessage& signal) {
    const QVariant news = signal.arguments().value(0);
    if (signal.member() == presenceChange ? news.toUInt() == idlePresence : news.toBool()) willLock.tell();
}

} // namespace clipwren
