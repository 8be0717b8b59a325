#include "platform/linux/status/SniStatusItem.h"

#include "platform/linux/status/DBusObject.h"
#include "platform/linux/status/SniIcon.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusObjectPath>

namespace clipwren {

namespace {

const QString interfaceName = QStringLiteral("org.kde.StatusNotifierItem");

constexpr const char* description = R"XML(
<interface name="org.kde.StatusNotifierItem">
  <property name="Category" type="s" access="read"/>
  <property name="Id" type="s" access="read"/>
  <property name="Title" type="s" access="read"/>
  <property name="Status" type="s" access="read"/>
  <property name="WindowId" type="i" access="read"/>
  <property name="IconName" type="s" access="read"/>
  <property name="IconPixmap" type="a(iiay)" access="read"/>
  <property name="IconAccessibleDesc" type="s" access="read"/>
  <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
  <property name="ItemIsMenu" type="b" access="read"/>
  <property name="Menu" type="o" access="read"/>
  <property name="XAyatanaLabel" type="s" access="read"/>
  <method name="Activate">
    <arg type="i" name="x" direction="in"/><arg type="i" name="y" direction="in"/>
  </method>
  <method name="SecondaryActivate">
    <arg type="i" name="x" direction="in"/><arg type="i" name="y" direction="in"/>
  </method>
  <method name="ContextMenu">
    <arg type="i" name="x" direction="in"/><arg type="i" name="y" direction="in"/>
  </method>
  <method name="Scroll">
    <arg type="i" name="delta" direction="in"/><arg type="s" name="orientation" direction="in"/>
  </method>
  <signal name="NewIcon"/>
  <signal name="NewToolTip"/>
  <signal name="XAyatanaNewLabel"><arg type="s" name="label"/><arg type="s" name="guide"/></signal>
</interface>
)XML";

// Each item of a process has a name of its own, also when one follows another.
QString nextServiceName() {
    static int count = 0;
    return QStringLiteral("org.kde.StatusNotifierItem-%1-%2")
        .arg(QCoreApplication::applicationPid())
        .arg(++count);
}

} // namespace

SniStatusItem::SniStatusItem(const StatusItemState& state, QDBusConnection connection, bool givesLabel)
    : state(state),
      bus(std::move(connection)),
      givesLabel(givesLabel),
      serviceName(nextServiceName()),
      busMenu(state, bus),
      announced(current()) {
    registerSniTypes();
    bus.registerVirtualObject(QLatin1String(path), this);
    bus.registerService(serviceName);
    auto request = QDBusMessage::createMethodCall(
        QStringLiteral("org.kde.StatusNotifierWatcher"), QStringLiteral("/StatusNotifierWatcher"),
        QStringLiteral("org.kde.StatusNotifierWatcher"), QStringLiteral("RegisterStatusNotifierItem"));
    request << serviceName;
    bus.send(request);
}

SniStatusItem::~SniStatusItem() {
    // The watcher forgets the item when its name goes.
    bus.unregisterService(serviceName);
    bus.unregisterObject(QLatin1String(path));
}

SniStatusItem::Announced SniStatusItem::current() const {
    return {state.symbolName, state.tint, state.toolTip, givesLabel ? state.shownText() : "", state.menu};
}

void SniStatusItem::stateDidChange() {
    const Announced before = std::exchange(announced, current());
    const bool menuChanged = announced.menu != before.menu;
    if (menuChanged) {
        ownMenu.close();
        busMenu.menuDidChange();
    }
    // Panels read anew who answers a click only together with the icon.
    if (menuChanged || announced.symbolName != before.symbolName || announced.tint != before.tint)
        announce(QStringLiteral("NewIcon"));
    if (announced.toolTip != before.toolTip) announce(QStringLiteral("NewToolTip"));
    if (announced.text != before.text)
        announce(QStringLiteral("XAyatanaNewLabel"), {QString::fromStdString(announced.text), QString()});
}

void SniStatusItem::announce(const QString& signal, const QVariantList& arguments) {
    auto message = QDBusMessage::createSignal(QLatin1String(path), interfaceName, signal);
    message.setArguments(arguments);
    bus.send(message);
}

QVariantMap SniStatusItem::properties() const {
    const SniToolTip toolTip{
        .iconName = {}, .iconPixmaps = {}, .title = QString::fromStdString(state.toolTip), .text = {}};
    QVariantMap result{
        {QStringLiteral("Category"), QStringLiteral("ApplicationStatus")},
        {QStringLiteral("Id"), QStringLiteral("clipwren")},
        {QStringLiteral("Title"), QStringLiteral("Clipwren")},
        {QStringLiteral("Status"), QStringLiteral("Active")},
        {QStringLiteral("WindowId"), 0},
        {QStringLiteral("IconName"), sniIconName(state)},
        {QStringLiteral("IconPixmap"), QVariant::fromValue(sniPixmaps(state))},
        {QStringLiteral("IconAccessibleDesc"), QString::fromStdString(state.accessibilityDescription)},
        {QStringLiteral("ToolTip"), QVariant::fromValue(toolTip)},
        {QStringLiteral("ItemIsMenu"), state.menu != nullptr},
        {QStringLiteral("Menu"), QVariant::fromValue(QDBusObjectPath(DBusMenu::path))},
    };
    // An empty label would hide the item on some panels.
    if (!announced.text.empty())
        result.insert(QStringLiteral("XAyatanaLabel"), QString::fromStdString(announced.text));
    return result;
}

QString SniStatusItem::introspect(const QString&) const { return QLatin1String(description); }

bool SniStatusItem::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    if (answerProperties(message, connection, interfaceName, properties())) return true;
    if (!message.interface().isEmpty() && message.interface() != interfaceName) return false;
    const QString member = message.member();
    const bool isClick = member == QLatin1String("Activate") ||
                         member == QLatin1String("SecondaryActivate") ||
                         member == QLatin1String("ContextMenu");
    if (!isClick && member != QLatin1String("Scroll")) return false;
    if (isClick) click();
    return connection.send(message.createReply());
}

void SniStatusItem::click() {
    // Later: the panel gets its answer first.
    if (state.menu)
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (state.menu) ownMenu.toggleAtPointer(*state.menu);
            },
            Qt::QueuedConnection);
    else if (const auto action = state.action)
        QMetaObject::invokeMethod(this, action, Qt::QueuedConnection);
}

} // namespace clipwren
