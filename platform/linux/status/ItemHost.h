#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>

#include <functional>

namespace clipwren {

// Follows the program that collects StatusNotifierItems for panels: the owner of the bus name
// org.kde.StatusNotifierWatcher. Main thread only.
class ItemHost {
public:
    // `changed` runs from the event loop when a watcher is found, comes, is replaced or goes. Without a bus
    // there is never one.
    ItemHost(QDBusConnection bus, std::function<void()> changed);

    bool isPresent() const { return present; }

private:
    void setPresent(bool isThere);

    QDBusConnection bus;
    const std::function<void()> changed;
    bool present = false;
    QDBusServiceWatcher watcher;
};

} // namespace clipwren
