#include "platform/linux/qt/QtSettingsView.h"

#include "platform/linux/qt/PermissionIcon.h"
#include "platform/linux/qt/QtSettingsWindow.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QThread>

namespace clipwren {

QtSettingsView::QtSettingsView(const SettingsContent& content) : window(new QtSettingsWindow(content)) {
    window->centre();
}

QtSettingsView::~QtSettingsView() {
    window->delegate.reset();
    window->hide();
    // Within an event the widget may be the one that is reporting it; without a loop none would delete it.
    if (QThread::currentThread()->loopLevel() > 0)
        window->deleteLater();
    else
        delete window;
}

void QtSettingsView::setDelegate(const std::weak_ptr<SettingsViewDelegate>& delegate) {
    window->delegate = delegate;
}

void QtSettingsView::makeKeyAndOrderFront() {
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    window->activateWindow();
}

void QtSettingsView::setPermissionIcon(const std::string& symbolName,
                                       const std::string& accessibilityDescription, SymbolTint tint) {
    window->permStatusIcon->setSymbol(symbolName, tint);
    window->permStatusIcon->setAccessibleName(QString::fromStdString(accessibilityDescription));
}

void QtSettingsView::setEnableButtonHidden(bool isHidden) { window->permEnableButton->setHidden(isHidden); }

void QtSettingsView::selectItem(SettingsPopup popup, int index) {
    window->popups[static_cast<std::size_t>(popup)]->setCurrentIndex(index);
}

int QtSettingsView::indexOfSelectedItem(SettingsPopup popup) const {
    return window->popups[static_cast<std::size_t>(popup)]->currentIndex();
}

void QtSettingsView::setLaunchAtLogin(bool isOn) {
    const QSignalBlocker blocker(window->launchAtLoginCheckbox); // a toggle is always the user's
    window->launchAtLoginCheckbox->setChecked(isOn);
}

bool QtSettingsView::launchAtLogin() const { return window->launchAtLoginCheckbox->isChecked(); }

void QtSettingsView::setAboutText(const std::string& text) {
    window->aboutLabel->setText(QString::fromStdString(text));
}

std::unique_ptr<SettingsView> QtSettingsViews::makeSettingsView(const SettingsContent& content) {
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) return nullptr;
    return std::make_unique<QtSettingsView>(content);
}

} // namespace clipwren
