#include "platform/linux/qt/PermissionIcon.h"
#include "platform/linux/qt/QtSettingsView.h"
#include "platform/linux/qt/QtSettingsWindow.h"
#include "tests/conformance/EventLoop.h"
#include "tests/conformance/SettingsViewConformance.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

namespace clipwren {

namespace {

QtSettingsWindow* shownWindow() {
    const auto widgets = QApplication::topLevelWidgets();
    for (QWidget* widget : widgets)
        if (auto* window = dynamic_cast<QtSettingsWindow*>(widget); window && window->isVisible())
            return window;
    return nullptr;
}

void press(QWidget* widget, int key) {
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        const QPointer<QWidget> target(widget);
        QKeyEvent event(type, key, Qt::NoModifier);
        if (target) QApplication::sendEvent(target, &event);
    }
}

} // namespace

// The user has a keyboard. Everything happens in an event loop, as it does in the program.
struct QtSettingsViewSubject {
    QtSettingsViews real;

    SettingsViews& views() { return real; }
    static QtSettingsWindow* window() { return shownWindow(); }
    static QPushButton* button(const QString& text) {
        const auto buttons = window()->findChildren<QPushButton*>();
        for (QPushButton* button : buttons)
            if (button->text() == text) return button;
        return nullptr;
    }
    static void inLoop(const std::function<void()>& work) {
        QTimer::singleShot(0, work);
        runEventLoop(0.05);
    }
    void choose(SettingsPopup popup, int index) {
        QComboBox* box = window()->popups[static_cast<std::size_t>(popup)];
        inLoop([&] {
            box->showPopup();
            box->view()->setCurrentIndex(box->model()->index(index, 0));
            press(box->view(), Qt::Key_Return);
        });
    }
    void toggleLaunchAtLogin() {
        inLoop([] { press(window()->launchAtLoginCheckbox, Qt::Key_Space); });
    }
    void clickEnable() { click(QStringLiteral("Ask")); }
    void clickReset() { click(QStringLiteral("Reset")); }
    void click(const QString& text) {
        inLoop([&] {
            if (QPushButton* target = button(text); target->isVisible()) press(target, Qt::Key_Space);
        });
    }
    void close() {
        inLoop([] { window()->close(); });
    }
    void settle() { runEventLoop(0.05); }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, SettingsViewConformance, QtSettingsViewSubject);

struct QtSettingsWindowTest : testing::Test {
    SettingsContent content{.title = "Settings",
                            .heading = "Welcome",
                            .permissionsTitle = "PERMISSIONS",
                            .permissionLabel = "Screen Recording",
                            .enableTitle = "Enable",
                            .recordingTitle = "RECORDING",
                            .popups = {{"Frame rate", {"10 fps", "15 fps"}},
                                       {"Resolution", {"1600 px wide"}},
                                       {"Auto-stop", {"No limit"}}},
                            .generalTitle = "GENERAL",
                            .launchAtLoginTitle = "Launch at login",
                            .aboutTitle = "ABOUT",
                            .resetTitle = "Reset All Settings"};
    const QFont fontBefore = QApplication::font();

    ~QtSettingsWindowTest() override { QApplication::setFont(fontBefore); }
    static void show(QtSettingsWindow& window) {
        window.aboutLabel->setText(QStringLiteral("Clipwren v1.2.0 (build 7) · 2025-03-14 09:26"));
        window.centre();
        window.show();
        ASSERT_TRUE(runEventLoopUntil([&] { return window.isActiveWindow(); }));
    }
};

TEST_F(QtSettingsWindowTest, HasItsGivenSizeAndKeepsIt) {
    QtSettingsWindow window(content);
    show(window);
    EXPECT_EQ(window.size(), QSize(520, 460));
    EXPECT_EQ(window.minimumSize(), window.maximumSize());
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Settings"));
    const QRect available = window.screen()->availableGeometry();
    EXPECT_LE((window.geometry().center() - available.center()).manhattanLength(), 60);
}

TEST_F(QtSettingsWindowTest, StandsOnTheGivenLines) {
    QtSettingsWindow window(content);
    show(window);
    const auto inWindow = [&](QWidget* widget) {
        return QRect(widget->mapTo(&window, QPoint()), widget->size());
    };
    for (QComboBox* box : window.popups)
        EXPECT_EQ(inWindow(box).right() + 1, 520 - 28);
    EXPECT_EQ(inWindow(window.permEnableButton).right() + 1, 520 - 28);
    EXPECT_EQ(inWindow(window.launchAtLoginCheckbox).left(), 28);
    EXPECT_EQ(inWindow(window.permStatusIcon).width(), 20);
    EXPECT_EQ(inWindow(window.permEnableButton).left() - inWindow(window.permStatusIcon).right() - 1, 8);
    EXPECT_EQ(inWindow(window.popups[1]).top() - inWindow(window.popups[0]).bottom() - 1, 8);
    const auto labels = window.findChildren<QLabel*>();
    EXPECT_EQ(inWindow(labels.first()).topLeft(), QPoint(28, 24));
    const auto buttons = window.findChildren<QPushButton*>();
    EXPECT_EQ(inWindow(buttons.last()).bottomRight(), QPoint(520 - 28 - 1, 460 - 16 - 1));

    window.permEnableButton->hide();
    runEventLoop(0.05);
    EXPECT_EQ(inWindow(window.permStatusIcon).right() + 1, 520 - 28);
}

TEST_F(QtSettingsWindowTest, GrowsRatherThanClipping) {
    QtSettingsWindow window(content);
    show(window);
    QFont font = QApplication::font();
    font.setPointSize(28);
    QApplication::setFont(font);
    EXPECT_TRUE(runEventLoopUntil([&] { return window.width() > 520 && window.height() > 460; }));
    runEventLoop(0.1);
    const auto widgets = window.findChildren<QWidget*>();
    for (const QWidget* widget : widgets) {
        if (!widget->isVisible()) continue; // the popups' lists
        const QSize needed = widget->minimumSizeHint();
        EXPECT_TRUE(widget->width() >= needed.width() && widget->height() >= needed.height())
            << widget->metaObject()->className() << " " << widget->width() << "x" << widget->height()
            << ", needs " << needed.width() << "x" << needed.height();
    }
}

TEST_F(QtSettingsWindowTest, TheTabKeyReachesEveryControlInOrder) {
    QtSettingsWindow window(content);
    show(window);
    std::vector<QWidget*> reached;
    for (int i = 0; i < 6; ++i) {
        reached.push_back(QApplication::focusWidget());
        press(QApplication::focusWidget(), Qt::Key_Tab);
    }
    const std::vector<QWidget*> all{window.permEnableButton,
                                    window.popups[0],
                                    window.popups[1],
                                    window.popups[2],
                                    window.launchAtLoginCheckbox,
                                    window.findChildren<QPushButton*>().last()};
    const auto start = std::find(reached.begin(), reached.end(), all.front());
    std::rotate(reached.begin(), start, reached.end());
    EXPECT_EQ(reached, all);
}

TEST_F(QtSettingsWindowTest, TellsWhatItShowsToThoseWhoHearIt) {
    QtSettingsWindow window(content);
    window.permStatusIcon->setAccessibleName(QStringLiteral("Granted"));
    show(window);
    const auto labelOf = [](QWidget* widget) {
        const auto relations = QAccessible::queryAccessibleInterface(widget)->relations(QAccessible::Label);
        return relations.isEmpty() ? QString() : relations.first().first->text(QAccessible::Name);
    };
    auto* icon = QAccessible::queryAccessibleInterface(window.permStatusIcon);
    EXPECT_EQ(icon->role(), QAccessible::Graphic);
    EXPECT_EQ(icon->text(QAccessible::Name), QStringLiteral("Granted"));
    EXPECT_EQ(labelOf(window.permStatusIcon), QStringLiteral("Screen Recording"));
    EXPECT_EQ(labelOf(window.popups[0]), QStringLiteral("Frame rate"));
    EXPECT_EQ(labelOf(window.popups[1]), QStringLiteral("Resolution"));
    EXPECT_EQ(labelOf(window.popups[2]), QStringLiteral("Auto-stop"));
}

TEST_F(QtSettingsWindowTest, ThePermissionIsAGreenMarkOrARedCross) {
    QtSettingsWindow window(content);
    show(window);
    const auto middleOfEdge = [&] {
        const QImage image = window.permStatusIcon->grab().toImage();
        return image.pixelColor(image.width() / 2, image.height() * 3 / 20);
    };
    window.permStatusIcon->setSymbol("checkmark.circle.fill", SymbolTint::systemGreen);
    EXPECT_GT(middleOfEdge().green(), middleOfEdge().red() + 60);
    window.permStatusIcon->setSymbol("xmark.circle.fill", SymbolTint::systemRed);
    EXPECT_GT(middleOfEdge().red(), middleOfEdge().green() + 60);
    const QColor ground = window.palette().color(QPalette::Window);
    window.permStatusIcon->setSymbol("no.such.symbol", SymbolTint::systemRed);
    EXPECT_EQ(middleOfEdge(), ground);
}

} // namespace clipwren
