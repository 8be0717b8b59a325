#include "platform/linux/SingleInstance.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QElapsedTimer>
#include <QThread>

#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <string>
#include <sys/file.h>
#include <unistd.h>

namespace clipwren {

namespace {

const QString busName = QStringLiteral("app.clipwren.Clipwren");
const QString objectPath = QStringLiteral("/app/clipwren/Clipwren");
const QString interfaceName = QStringLiteral("org.freedesktop.Application");
const QString triggerAction = QStringLiteral("trigger");
const QString quitAction = QStringLiteral("quit");
constexpr int answerMilliseconds = 5000;
constexpr int endMilliseconds = 10'000;

constexpr const char* description = R"XML(
<interface name="org.freedesktop.Application">
  <method name="Activate"><arg type="a{sv}" name="platform_data" direction="in"/></method>
  <method name="Open">
    <arg type="as" name="uris" direction="in"/><arg type="a{sv}" name="platform_data" direction="in"/>
  </method>
  <method name="ActivateAction">
    <arg type="s" name="action_name" direction="in"/><arg type="av" name="parameter" direction="in"/>
    <arg type="a{sv}" name="platform_data" direction="in"/>
  </method>
</interface>
)XML";

Unexpected<PlatformError> failure(const char* sentence) { return Unexpected{PlatformError{sentence}}; }

// A start that only asks has no application object, which the bus needs.
std::unique_ptr<QCoreApplication> applicationIfNone() {
    static int count = 1;
    static char name[] = "clipwren";
    static char* arguments[] = {name, nullptr};
    return QCoreApplication::instance() ? nullptr : std::make_unique<QCoreApplication>(count, arguments);
}

Expected<void, PlatformError> ask(const QString& method, const QVariantList& arguments) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return failure("there is no D-Bus session, through which a running Clipwren could be reached");
    auto call = QDBusMessage::createMethodCall(busName, objectPath, interfaceName, method);
    call.setArguments(arguments);
    call.setAutoStartService(false);
    const QDBusMessage answer = bus.call(call, QDBus::Block, answerMilliseconds);
    if (answer.type() != QDBusMessage::ErrorMessage) return {};
    if (QDBusError(answer).type() == QDBusError::ServiceUnknown ||
        QDBusError(answer).name() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner"))
        return failure("Clipwren is not running");
    return failure("the running Clipwren does not answer");
}

Expected<void, PlatformError> askForAction(const QString& action) {
    return ask(QStringLiteral("ActivateAction"), {action, QVariantList(), QVariantMap()});
}

} // namespace

SingleInstance::~SingleInstance() {
    if (!ownsName) return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.unregisterService(busName);
    bus.unregisterObject(objectPath);
}

SingleInstance::Claim SingleInstance::claim() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return lock() ? Claim::alone : Claim::taken;
    // Whoever finds the name finds the object.
    bus.registerVirtualObject(objectPath, this);
    ownsName = bus.registerService(busName);
    if (!ownsName) bus.unregisterObject(objectPath);
    return ownsName ? Claim::granted : Claim::taken;
}

// The lock goes with the process. Where it cannot be made nothing is known of others.
bool SingleInstance::lock() {
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    if (!folder || !*folder) return true;
    const std::string file = std::string(folder) + "/clipwren.lock";
    const int descriptor = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    return descriptor < 0 || flock(descriptor, LOCK_EX | LOCK_NB) == 0;
}

QString SingleInstance::introspect(const QString&) const { return QLatin1String(description); }

bool SingleInstance::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    if (!message.interface().isEmpty() && message.interface() != interfaceName) return false;
    const QString action = message.arguments().value(0).toString();
    const std::function<void()>* handler = nullptr;
    if (message.member() == QLatin1String("Activate") || message.member() == QLatin1String("Open"))
        handler = &handlers.activate;
    else if (message.member() != QLatin1String("ActivateAction"))
        return false;
    else if (action == triggerAction)
        handler = &handlers.trigger;
    else if (action == quitAction)
        handler = &handlers.quit;
    if (!handler)
        return connection.send(
            message.createErrorReply(QDBusError::InvalidArgs, QStringLiteral("There is no such action.")));
    connection.send(message.createReply());
    (*handler)();
    return true;
}

Expected<void, PlatformError> activateRunningInstance() {
    return ask(QStringLiteral("Activate"), {QVariantMap()});
}

Expected<void, PlatformError> triggerRunningInstance() {
    const auto application = applicationIfNone();
    return askForAction(triggerAction);
}

Expected<void, PlatformError> quitRunningInstance() {
    const auto application = applicationIfNone();
    auto asked = askForAction(quitAction);
    if (!asked) return asked;
    QDBusConnectionInterface* bus = QDBusConnection::sessionBus().interface();
    QElapsedTimer waited;
    waited.start();
    while (bus->isServiceRegistered(busName)) {
        if (waited.hasExpired(endMilliseconds)) return failure("the running Clipwren does not end");
        QThread::msleep(10);
    }
    return {};
}

} // namespace clipwren
