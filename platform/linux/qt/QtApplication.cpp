#include "platform/linux/qt/QtApplication.h"

#include <QApplication>
#include <QWidget>

namespace clipwren {

void QtApplication::setActivationPolicy(ActivationPolicy) {}

void QtApplication::activateIgnoringOtherApps() {
    const auto widgets = QApplication::topLevelWidgets();
    for (QWidget* window : widgets) {
        if (!window->isVisible() || window->windowType() == Qt::ToolTip) continue;
        window->raise();
        window->activateWindow();
    }
}

// Later rather than at once, so that it also ends a loop that has not begun yet.
void QtApplication::terminate() {
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
}

} // namespace clipwren
