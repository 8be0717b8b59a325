#include "platform/linux/qt/QtSettingsWindow.h"

#include "platform/linux/qt/AccessibleRole.h"
#include "platform/linux/qt/PermissionIcon.h"
#include "platform/linux/qt/SettingsFonts.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QCursor>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>

#include <algorithm>

namespace clipwren {

namespace {

constexpr QSize contentSize(520, 460);
constexpr int topMargin = 24;
constexpr int sideMargin = 28;
constexpr int bottomMargin = 16;
constexpr int spacingAfterHeading = 22;
constexpr int sectionSpacing = 20;
constexpr int spacingAboveResetButton = 16;
constexpr int rowSpacing = 8;
constexpr int controlSpacing = 10;
constexpr int permissionSpacing = 8;

constexpr double headingSize = 18;
constexpr double sectionTitleSize = 10;
constexpr double aboutSize = 11;
constexpr double smallButtonSize = 11;

QString textOf(const std::string& text) { return QString::fromStdString(text); }

template <typename Layout>
Layout* makeLayout(QWidget* widget, int spacing) {
    auto* layout = new Layout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacing);
    return layout;
}

// The theme's text colour, less prominent by so much.
void soften(QLabel* label, const QPalette& theme, double strength) {
    QColor color = theme.color(QPalette::WindowText);
    color.setAlphaF(static_cast<float>(strength));
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, color);
    label->setPalette(palette);
}

} // namespace

QtSettingsWindow::QtSettingsWindow(const SettingsContent& content)
    : QWidget(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                           Qt::WindowCloseButtonHint) {
    setWindowTitle(textOf(content.title));
    setAttribute(Qt::WA_QuitOnClose, false);
    setAccessibleRole(*this, QAccessible::Window);

    // The window is as large as this widget wants to be, and the user cannot resize it.
    auto* contentView = new QWidget(this);
    contentView->setMinimumSize(contentSize);
    auto* windowLayout = makeLayout<QVBoxLayout>(this, 0);
    windowLayout->setSizeConstraint(QLayout::SetFixedSize);
    windowLayout->addWidget(contentView);

    auto* stack = makeLayout<QVBoxLayout>(contentView, 0);
    stack->setContentsMargins(sideMargin, topMargin, sideMargin, bottomMargin);
    heading = new QLabel(textOf(content.heading));
    stack->addWidget(heading);
    stack->addSpacing(spacingAfterHeading);

    stack->addWidget(makeSection(content.permissionsTitle, {makePermissionRow(content)}));
    stack->addSpacing(sectionSpacing);

    std::vector<QWidget*> popupRows;
    popupRows.reserve(popups.size());
    for (std::size_t i = 0; i < popups.size(); ++i)
        popupRows.push_back(makePopupRow(content.popups[i], static_cast<SettingsPopup>(i)));
    stack->addWidget(makeSection(content.recordingTitle, popupRows));
    stack->addSpacing(sectionSpacing);

    launchAtLoginCheckbox = new QCheckBox(textOf(content.launchAtLoginTitle));
    // What a screen reader does to the box is no click.
    connect(launchAtLoginCheckbox, &QCheckBox::toggled, this,
            [this] { report(&SettingsViewDelegate::launchAtLoginChanged); });
    stack->addWidget(makeSection(content.generalTitle, {launchAtLoginCheckbox}));
    stack->addSpacing(sectionSpacing);

    aboutLabel = new QLabel;
    aboutLabel->setTextFormat(Qt::PlainText);
    stack->addWidget(makeSection(content.aboutTitle, {aboutLabel}));

    stack->addSpacing(spacingAboveResetButton);
    stack->addStretch();
    resetButton = new QPushButton(textOf(content.resetTitle));
    connect(resetButton, &QPushButton::clicked, this,
            [this] { report(&SettingsViewDelegate::resetAllClicked); });
    stack->addWidget(resetButton, 0, Qt::AlignRight);

    followTheme();
}

QWidget* QtSettingsWindow::makePermissionRow(const SettingsContent& content) {
    permStatusIcon = new PermissionIcon;
    permEnableButton = new QPushButton(textOf(content.enableTitle));
    permEnableButton->setAccessibleDescription(textOf(content.permissionLabel));
    connect(permEnableButton, &QPushButton::clicked, this,
            [this] { report(&SettingsViewDelegate::enableClicked); });
    return formRow(content.permissionLabel, {permStatusIcon, permEnableButton});
}

QWidget* QtSettingsWindow::makePopupRow(const SettingsPopupRow& row, SettingsPopup popup) {
    auto* box = new QComboBox;
    for (const std::string& item : row.items)
        box->addItem(textOf(item));
    popups[static_cast<std::size_t>(popup)] = box;
    // Unlike a change of the index, an activation is always the user's.
    connect(box, &QComboBox::activated, this, [this, popup] {
        switch (popup) {
        case SettingsPopup::fps: return report(&SettingsViewDelegate::fpsChanged);
        case SettingsPopup::resolution: return report(&SettingsViewDelegate::resolutionChanged);
        case SettingsPopup::duration: return report(&SettingsViewDelegate::durationChanged);
        }
    });
    return formRow(row.label, {box});
}

// The label names the first control to those who hear the window; Qt finds it only among its siblings.
QWidget* QtSettingsWindow::formRow(const std::string& text, const std::vector<QWidget*>& controls) {
    auto* row = new QWidget;
    auto* layout = makeLayout<QHBoxLayout>(row, controlSpacing);
    auto* label = new QLabel(textOf(text));
    label->setBuddy(controls.front());
    layout->addWidget(label, 0, Qt::AlignVCenter);
    layout->addStretch();
    auto* controlsLayout = new QHBoxLayout;
    controlsLayout->setSpacing(permissionSpacing);
    for (QWidget* control : controls)
        controlsLayout->addWidget(control, 0, Qt::AlignVCenter);
    layout->addLayout(controlsLayout);
    return row;
}

QWidget* QtSettingsWindow::makeSection(const std::string& title, const std::vector<QWidget*>& rows) {
    auto* section = new QWidget;
    setAccessibleRole(*section, QAccessible::Grouping);
    section->setAccessibleName(textOf(title));
    auto* layout = makeLayout<QVBoxLayout>(section, rowSpacing);
    sectionTitles.push_back(new QLabel(textOf(title)));
    layout->addWidget(sectionTitles.back());
    for (QWidget* row : rows)
        layout->addWidget(row);
    return section;
}

void QtSettingsWindow::report(void (SettingsViewDelegate::*event)()) {
    if (const auto user = delegate.lock()) ((*user).*event)();
}

void QtSettingsWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    report(&SettingsViewDelegate::windowWillClose);
}

void QtSettingsWindow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange ||
        event->type() == QEvent::StyleChange)
        followTheme();
}

void QtSettingsWindow::followTheme() {
    heading->setFont(fontOfSize(font(), headingSize, QFont::DemiBold));
    for (QLabel* title : sectionTitles) {
        title->setFont(fontOfSize(font(), sectionTitleSize, QFont::DemiBold));
        soften(title, palette(), 0.6);
    }
    aboutLabel->setFont(fontOfSize(font(), aboutSize));
    soften(aboutLabel, palette(), 0.75);
    for (QPushButton* button : {permEnableButton, resetButton})
        button->setFont(fontOfSize(font(), smallButtonSize));
    permStatusIcon->updateGeometry();
}

void QtSettingsWindow::centre() {
    const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
    if (!screen) screen = QGuiApplication::primaryScreen();
    if (!screen) return;
    QRect frame({}, sizeHint());
    frame.moveCenter(screen->availableGeometry().center());
    move(frame.topLeft());
}

} // namespace clipwren
