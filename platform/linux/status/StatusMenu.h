#pragma once

#include "platform/StatusItem.h"

#include <QMenu>
#include <QPointer>
#include <QRect>

#include <string>

namespace clipwren {

// The status item's menu as a window of our own, for panels that leave opening it to us. Main thread only.
class StatusMenu {
public:
    StatusMenu() = default;
    ~StatusMenu();
    StatusMenu(const StatusMenu&) = delete;
    StatusMenu& operator=(const StatusMenu&) = delete;

    // Opens the menu beside the item, which occupies `item` (native pixels of the root window): below it or,
    // where the item lies in the lower half of its screen, above it. A menu that is open closes instead.
    void toggle(const Menu& menu, const QRect& item);
    // The same for an item of which only is known that it was clicked: there the pointer is.
    void toggleAtPointer(const Menu& menu);
    void close();
    bool isOpen() const { return widget && widget->isVisible(); }

private:
    // Both in Qt's coordinates.
    void toggleBeside(const Menu& menu, const QRect& item, const QRect& screen);

    QPointer<QMenu> widget;
};

// The title as a QAction takes it: nothing in it is a mnemonic.
QString actionText(const std::string& title);

} // namespace clipwren
