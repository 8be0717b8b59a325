#pragma once

#include "platform/linux/status/StatusItemState.h"

#include <QDBusConnection>
#include <QDBusVirtualObject>

namespace clipwren {

// The status item's menu as an object on the session bus (com.canonical.dbusmenu), drawn by the panel.
// Without a menu its layout is empty, and a panel that opens it all the same has been clicked: the action
// runs. Main thread only.
class DBusMenu final : public QDBusVirtualObject {
public:
    static constexpr const char* path = "/MenuBar";

    // The state outlives this object.
    DBusMenu(const StatusItemState& state, QDBusConnection bus);
    ~DBusMenu() override;

    // The state's menu is another one.
    void menuDidChange();

    QString introspect(const QString& objectPath) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    // To a message with the arguments that its method takes.
    QVariantList answer(const QDBusMessage& message, QString& error);
    bool handleEvent(int id, const QString& event);

    const StatusItemState& state;
    QDBusConnection bus;
    uint revision = 1;
};

} // namespace clipwren
