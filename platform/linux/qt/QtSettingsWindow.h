#pragma once

#include "platform/SettingsView.h"

#include <QWidget>

#include <array>
#include <memory>
#include <string>
#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace clipwren {

class PermissionIcon;

// The settings window's widgets. They look as the user's theme has it and grow with the user's font; the
// window is no smaller than its given size.
class QtSettingsWindow : public QWidget {
public:
    explicit QtSettingsWindow(const SettingsContent& content);

    std::weak_ptr<SettingsViewDelegate> delegate;
    PermissionIcon* permStatusIcon;
    QPushButton* permEnableButton;
    std::array<QComboBox*, 3> popups; // by SettingsPopup
    QCheckBox* launchAtLoginCheckbox;
    QLabel* aboutLabel;

    void centre();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    QWidget* makePermissionRow(const SettingsContent& content);
    QWidget* makePopupRow(const SettingsPopupRow& row, SettingsPopup popup);
    QWidget* formRow(const std::string& text, const std::vector<QWidget*>& controls);
    QWidget* makeSection(const std::string& title, const std::vector<QWidget*>& rows);
    void report(void (SettingsViewDelegate::*event)());
    void followTheme();

    QLabel* heading;
    QPushButton* resetButton;
    std::vector<QLabel*> sectionTitles;
};

} // namespace clipwren
