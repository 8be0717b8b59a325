#include "platform/linux/status/DBusMenu.h"

#include "platform/linux/status/DBusObject.h"
#include "platform/linux/status/MenuLayout.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QHash>

namespace clipwren {

namespace {

const QString interfaceName = QStringLiteral("com.canonical.dbusmenu");

// Version 3 is the first with the methods for groups.
const QVariantMap menuFacts{
    {QStringLiteral("Version"), 3u},
    {QStringLiteral("TextDirection"), QStringLiteral("ltr")},
    {QStringLiteral("Status"), QStringLiteral("normal")},
    {QStringLiteral("IconThemePath"), QStringList()},
};

// What each method takes. Reading arguments as what they are not ends the process or never ends.
const QHash<QString, QString> signatures{
    {QStringLiteral("GetLayout"), QStringLiteral("iias")},
    {QStringLiteral("GetGroupProperties"), QStringLiteral("aias")},
    {QStringLiteral("GetProperty"), QStringLiteral("is")},
    {QStringLiteral("Event"), QStringLiteral("isvu")},
    {QStringLiteral("EventGroup"), QStringLiteral("a(isvu)")},
    {QStringLiteral("AboutToShow"), QStringLiteral("i")},
    {QStringLiteral("AboutToShowGroup"), QStringLiteral("ai")},
};

constexpr const char* description = R"XML(
<interface name="com.canonical.dbusmenu">
  <property name="Version" type="u" access="read"/>
  <property name="TextDirection" type="s" access="read"/>
  <property name="Status" type="s" access="read"/>
  <property name="IconThemePath" type="as" access="read"/>
  <method name="GetLayout">
    <arg type="i" name="parentId" direction="in"/><arg type="i" name="recursionDepth" direction="in"/>
    <arg type="as" name="propertyNames" direction="in"/>
    <arg type="u" name="revision" direction="out"/><arg type="(ia{sv}av)" name="layout" direction="out"/>
  </method>
  <method name="GetGroupProperties">
    <arg type="ai" name="ids" direction="in"/><arg type="as" name="propertyNames" direction="in"/>
    <arg type="a(ia{sv})" name="properties" direction="out"/>
  </method>
  <method name="GetProperty">
    <arg type="i" name="id" direction="in"/><arg type="s" name="name" direction="in"/>
    <arg type="v" name="value" direction="out"/>
  </method>
  <method name="Event">
    <arg type="i" name="id" direction="in"/><arg type="s" name="eventId" direction="in"/>
    <arg type="v" name="data" direction="in"/><arg type="u" name="timestamp" direction="in"/>
  </method>
  <method name="EventGroup">
    <arg type="a(isvu)" name="events" direction="in"/><arg type="ai" name="idErrors" direction="out"/>
  </method>
  <method name="AboutToShow">
    <arg type="i" name="id" direction="in"/><arg type="b" name="needUpdate" direction="out"/>
  </method>
  <method name="AboutToShowGroup">
    <arg type="ai" name="ids" direction="in"/>
    <arg type="ai" name="updatesNeeded" direction="out"/><arg type="ai" name="idErrors" direction="out"/>
  </method>
  <signal name="ItemsPropertiesUpdated">
    <arg type="a(ia{sv})" name="updatedProps"/><arg type="a(ias)" name="removedProps"/>
  </signal>
  <signal name="LayoutUpdated"><arg type="u" name="revision"/><arg type="i" name="parent"/></signal>
  <signal name="ItemActivationRequested"><arg type="i" name="id"/><arg type="u" name="timestamp"/></signal>
</interface>
)XML";

struct MenuEvent {
    int id = 0;
    QString event;
};

QList<MenuEvent> eventsOf(const QDBusArgument& argument) {
    QList<MenuEvent> events;
    argument.beginArray();
    while (!argument.atEnd()) {
        MenuEvent event;
        QDBusVariant data;
        uint timestamp = 0;
        argument.beginStructure();
        argument >> event.id >> event.event >> data >> timestamp;
        argument.endStructure();
        events.append(event);
    }
    argument.endArray();
    return events;
}

} // namespace

DBusMenu::DBusMenu(const StatusItemState& state, QDBusConnection connection)
    : state(state),
      bus(std::move(connection)) {
    registerMenuTypes();
    bus.registerVirtualObject(QLatin1String(path), this);
}

DBusMenu::~DBusMenu() { bus.unregisterObject(QLatin1String(path)); }

void DBusMenu::menuDidChange() {
    auto signal =
        QDBusMessage::createSignal(QLatin1String(path), interfaceName, QStringLiteral("LayoutUpdated"));
    signal << ++revision << 0;
    bus.send(signal);
}

QString DBusMenu::introspect(const QString&) const { return QLatin1String(description); }

bool DBusMenu::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    if (answerProperties(message, connection, interfaceName, menuFacts)) return true;
    if (!message.interface().isEmpty() && message.interface() != interfaceName) return false;
    const auto signature = signatures.find(message.member());
    if (signature == signatures.end()) return false;
    QString error;
    QVariantList answers;
    if (message.signature() == *signature)
        answers = answer(message, error);
    else
        error = QStringLiteral("The method takes other arguments: ") + *signature;
    return connection.send(error.isEmpty() ? message.createReply(answers)
                                           : message.createErrorReply(QDBusError::InvalidArgs, error));
}

QVariantList DBusMenu::answer(const QDBusMessage& message, QString& error) {
    const QString member = message.member();
    const QVariantList arguments = message.arguments();
    const Menu* menu = state.menu.get();
    const auto isLine = [&](int id) { return id == 0 || menuItem(menu, id) != nullptr; };
    const QString unknownLine = QStringLiteral("The menu has no such line.");

    if (member == QLatin1String("GetLayout")) {
        const auto layout = menuLayout(menu, arguments.value(0).toInt(), arguments.value(1).toInt(),
                                       arguments.value(2).toStringList());
        if (layout) return {revision, QVariant::fromValue(*layout)};
        error = unknownLine;
    } else if (member == QLatin1String("GetGroupProperties")) {
        const auto ids = qdbus_cast<QList<int>>(arguments.value(0));
        return {QVariant::fromValue(menuProperties(menu, ids, arguments.value(1).toStringList()))};
    } else if (member == QLatin1String("GetProperty")) {
        const QString name = arguments.value(1).toString();
        const auto found = menuProperties(menu, {arguments.value(0).toInt()}, {name});
        if (!found.isEmpty() && found.first().properties.contains(name))
            return {QVariant::fromValue(QDBusVariant(found.first().properties.value(name)))};
        error = QStringLiteral("The line has no such property.");
    } else if (member == QLatin1String("Event")) {
        if (handleEvent(arguments.value(0).toInt(), arguments.value(1).toString())) return {};
        error = unknownLine;
    } else if (member == QLatin1String("EventGroup")) {
        QList<int> unknown;
        const auto events = eventsOf(arguments.value(0).value<QDBusArgument>());
        for (const MenuEvent& event : events)
            if (!handleEvent(event.id, event.event)) unknown.append(event.id);
        return {QVariant::fromValue(unknown)};
    } else if (member == QLatin1String("AboutToShow")) {
        return {false};
    } else if (member == QLatin1String("AboutToShowGroup")) {
        QList<int> unknown = qdbus_cast<QList<int>>(arguments.value(0));
        unknown.removeIf(isLine);
        return {QVariant::fromValue(QList<int>()), QVariant::fromValue(unknown)};
    }
    return {};
}

bool DBusMenu::handleEvent(int id, const QString& event) {
    std::function<void()> work;
    if (id == 0) {
        if (event == QLatin1String("opened") && !state.menu) work = state.action;
    } else if (const MenuItem* item = menuItem(state.menu.get(), id)) {
        if (event == QLatin1String("clicked")) work = item->action;
    } else {
        return false;
    }
    // Later: the panel gets its answer first, and may take its menu down meanwhile.
    if (work) QMetaObject::invokeMethod(this, std::move(work), Qt::QueuedConnection);
    return true;
}

} // namespace clipwren
