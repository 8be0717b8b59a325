#pragma once

#include "platform/StatusItem.h"

#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QStringList>
#include <QVariantMap>

namespace clipwren {

// A menu as com.canonical.dbusmenu tells of it: pure functions, no bus asked.
//
// Identifiers: 0 is the menu itself, n its nth line. Without a menu there is only 0, with nothing in it.

struct MenuNode {
    int id = 0;
    QVariantMap properties;
    QList<MenuNode> children;
};

struct MenuItemProperties {
    int id = 0;
    QVariantMap properties;
};

// Called once before any of these goes over the bus.
void registerMenuTypes();

// The node and, `depth` levels down (negative: all), what is in it. With `names` only those properties.
// Nothing for an unknown identifier.
std::optional<MenuNode> menuLayout(const Menu* menu, int id, int depth, const QStringList& names);

// The properties of each known identifier among `ids`; of all when there are none.
QList<MenuItemProperties> menuProperties(const Menu* menu, const QList<int>& ids, const QStringList& names);

// The line with that identifier; none for an unknown one.
const MenuItem* menuItem(const Menu* menu, int id);

QDBusArgument& operator<<(QDBusArgument& argument, const MenuNode& node);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuNode& node);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuItemProperties& item);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuItemProperties& item);

} // namespace clipwren

Q_DECLARE_METATYPE(clipwren::MenuNode)
Q_DECLARE_METATYPE(clipwren::MenuItemProperties)
