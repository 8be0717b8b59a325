#include "platform/linux/qt/AccessibleRole.h"

#include <QAccessibleWidget>
#include <QVariant>
#include <QWidget>

namespace clipwren {

namespace {

constexpr const char* property = "clipwrenAccessibleRole";

QAccessibleInterface* describe(const QString&, QObject* object) {
    auto* widget = qobject_cast<QWidget*>(object);
    const QVariant role = widget ? widget->property(property) : QVariant();
    return role.isValid() ? new QAccessibleWidget(widget, static_cast<QAccessible::Role>(role.toInt()))
                          : nullptr;
}

} // namespace

void setAccessibleRole(QWidget& widget, QAccessible::Role role) {
    static const bool isInstalled = (QAccessible::installFactory(describe), true);
    static_cast<void>(isInstalled);
    widget.setProperty(property, static_cast<int>(role));
}

} // namespace clipwren
