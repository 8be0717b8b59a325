#include "platform/linux/status/StatusMenu.h"

#include <QAction>
#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>

namespace clipwren {

namespace {

// Runs the items' shortcuts itself: they hold only while the menu is open, and no window of the program has
// them.
class MenuWindow final : public QMenu {
public:
    using QMenu::QMenu;

protected:
    void keyPressEvent(QKeyEvent* event) override {
        const QKeySequence pressed(event->keyCombination());
        const auto all = actions();
        for (QAction* action : all)
            if (!action->shortcut().isEmpty() && action->shortcut() == pressed) {
                close();
                action->trigger();
                return;
            }
        QMenu::keyPressEvent(event);
    }
};

struct Place {
    QRect item;   // in Qt's coordinates
    QRect screen; // the same
};

// Qt keeps the native origin of each screen and divides what lies inside by the screen's factor.
Place place(const QRect& native) {
    const QPoint center = native.center();
    for (const QScreen* screen : QGuiApplication::screens()) {
        const double ratio = screen->devicePixelRatio();
        const QRect area = screen->geometry();
        const QRect nativeArea(area.topLeft(), (QSizeF(area.size()) * ratio).toSize());
        if (!nativeArea.contains(center)) continue;
        const QPointF inside = QPointF(native.topLeft() - area.topLeft()) / ratio;
        return {{(area.topLeft() + inside).toPoint(), (QSizeF(native.size()) / ratio).toSize()}, area};
    }
    return {native, QGuiApplication::primaryScreen()->geometry()};
}

} // namespace

QString actionText(const std::string& title) {
    return QString::fromStdString(title).replace(QLatin1Char('&'), QLatin1String("&&"));
}

StatusMenu::~StatusMenu() { close(); }

void StatusMenu::toggle(const Menu& menu, const QRect& item) {
    const Place at = place(item);
    toggleBeside(menu, at.item, at.screen);
}

void StatusMenu::toggleAtPointer(const Menu& menu) {
    const QPoint pointer = QCursor::pos();
    const QScreen* screen = QGuiApplication::screenAt(pointer);
    if (!screen) screen = QGuiApplication::primaryScreen();
    toggleBeside(menu, QRect(pointer, QSize(1, 1)), screen->geometry());
}

void StatusMenu::toggleBeside(const Menu& menu, const QRect& item, const QRect& screen) {
    if (isOpen()) return close();
    close();
    widget = new MenuWindow;
    for (const MenuItem& entry : menu.items) {
        if (entry.isSeparator) {
            widget->addSeparator();
            continue;
        }
        QAction* action = widget->addAction(actionText(entry.title));
        action->setIconVisibleInMenu(entry.showsImage);
        if (!entry.keyEquivalent.empty()) {
            const QString key = QString::fromStdString(entry.keyEquivalent).toUpper();
            action->setShortcut(QKeySequence(QLatin1String("Ctrl+") + key));
            action->setShortcutVisibleInContextMenu(true);
        }
        // Later, from the event loop: the menu is then gone and so are its grabs of pointer and keyboard.
        QObject::connect(action, &QAction::triggered, action, entry.action, Qt::QueuedConnection);
    }
    QObject::connect(widget, &QMenu::aboutToHide, widget, &QObject::deleteLater, Qt::QueuedConnection);

    const bool isBelowMiddle = item.center().y() > screen.center().y();
    const int top = isBelowMiddle ? item.top() - widget->sizeHint().height() : item.bottom() + 1;
    widget->popup({item.left(), top});
}

void StatusMenu::close() {
    if (!widget) return;
    widget->close();
    if (widget) widget->deleteLater();
    widget.clear();
}

} // namespace clipwren
