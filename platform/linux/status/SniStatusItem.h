#pragma once

#include "platform/linux/status/DBusMenu.h"
#include "platform/linux/status/StatusItemState.h"
#include "platform/linux/status/StatusMenu.h"

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QList>
#include <QString>

namespace clipwren {

// The status item as an object on the session bus (org.kde.StatusNotifierItem), shown by the panel.
//
// With a menu a click is the panel's to answer with it; panels that ask us all the same get the menu as a
// window of our own, where the pointer is: the position that comes with a click is often wrong. Without a
// menu every kind of click runs the action. The text goes out as the label that some panels show beside the
// picture. Main thread only.
class SniStatusItem final : public QDBusVirtualObject, public StatusItemView {
public:
    static constexpr const char* path = "/StatusNotifierItem";

    // Puts the objects on the bus and asks the watcher, which must be there, to show them. `givesLabel`:
    // whether the text goes out.
    SniStatusItem(const StatusItemState& state, QDBusConnection bus, bool givesLabel);
    ~SniStatusItem() override;

    void stateDidChange() override;

    QString introspect(const QString& objectPath) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    // What panels are told of by signals, each on its own.
    struct Announced {
        std::string symbolName;
        std::optional<Tint> tint;
        std::string toolTip;
        std::string text;
        std::shared_ptr<const Menu> menu;
    };
    Announced current() const;
    void announce(const QString& signal, const QVariantList& arguments = {});
    QVariantMap properties() const;
    void click();

    const StatusItemState& state;
    QDBusConnection bus;
    const bool givesLabel;
    const QString serviceName;
    DBusMenu busMenu;
    StatusMenu ownMenu;
    Announced announced;
};

} // namespace clipwren
