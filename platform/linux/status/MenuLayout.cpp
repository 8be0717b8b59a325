#include "platform/linux/status/MenuLayout.h"

#include <QDBusMetaType>
#include <QDBusVariant>

namespace clipwren {

namespace {

int lineCount(const Menu* menu) { return menu ? static_cast<int>(menu->items.size()) : 0; }

QVariantMap itemProperties(const MenuItem& item) {
    if (item.isSeparator) return {{QStringLiteral("type"), QStringLiteral("separator")}};
    // An underscore would mark the next character as a mnemonic.
    const QString label = QString::fromStdString(item.title).replace(QLatin1Char('_'), QLatin1String("__"));
    QVariantMap properties{{QStringLiteral("label"), label}};
    if (!item.keyEquivalent.empty()) {
        const QList<QStringList> shortcut{
            {QStringLiteral("Control"), QString::fromStdString(item.keyEquivalent)}};
        properties.insert(QStringLiteral("shortcut"), QVariant::fromValue(shortcut));
    }
    return properties;
}

std::optional<QVariantMap> properties(const Menu* menu, int id, const QStringList& names) {
    QVariantMap found;
    if (id == 0)
        found.insert(QStringLiteral("children-display"), QStringLiteral("submenu"));
    else if (const MenuItem* item = menuItem(menu, id))
        found = itemProperties(*item);
    else
        return std::nullopt;
    if (!names.isEmpty()) found.removeIf([&](const auto& entry) { return !names.contains(entry.key()); });
    return found;
}

} // namespace

void registerMenuTypes() {
    qDBusRegisterMetaType<QList<QStringList>>();
    qDBusRegisterMetaType<MenuNode>();
    qDBusRegisterMetaType<MenuItemProperties>();
    qDBusRegisterMetaType<QList<MenuItemProperties>>();
}

const MenuItem* menuItem(const Menu* menu, int id) {
    if (id < 1 || id > lineCount(menu)) return nullptr;
    return &menu->items[static_cast<std::size_t>(id - 1)];
}

std::optional<MenuNode> menuLayout(const Menu* menu, int id, int depth, const QStringList& names) {
    auto own = properties(menu, id, names);
    if (!own) return std::nullopt;
    MenuNode node{.id = id, .properties = std::move(*own), .children = {}};
    if (id == 0 && depth != 0)
        for (int line = 1; line <= lineCount(menu); ++line)
            node.children.append({.id = line, .properties = *properties(menu, line, names), .children = {}});
    return node;
}

QList<MenuItemProperties> menuProperties(const Menu* menu, const QList<int>& ids, const QStringList& names) {
    QList<int> wanted = ids;
    if (wanted.isEmpty())
        for (int id = 0; id <= lineCount(menu); ++id)
            wanted.append(id);
    QList<MenuItemProperties> result;
    for (const int id : wanted)
        if (auto own = properties(menu, id, names)) result.append({.id = id, .properties = std::move(*own)});
    return result;
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuNode& node) {
    argument.beginStructure();
    argument << node.id << node.properties;
    argument.beginArray(QMetaType::fromType<QDBusVariant>());
    for (const MenuNode& child : node.children)
        argument << QDBusVariant(QVariant::fromValue(child));
    argument.endArray();
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuNode& node) {
    argument.beginStructure();
    argument >> node.id >> node.properties;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        node.children.append(qdbus_cast<MenuNode>(child.variant()));
    }
    argument.endArray();
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuItemProperties& item) {
    argument.beginStructure();
    argument << item.id << item.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuItemProperties& item) {
    argument.beginStructure();
    argument >> item.id >> item.properties;
    argument.endStructure();
    return argument;
}

} // namespace clipwren
