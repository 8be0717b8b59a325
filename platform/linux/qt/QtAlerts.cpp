#include "platform/linux/qt/QtAlerts.h"

#include "platform/Log.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTextDocument>
#include <QTimer>

#include <algorithm>
#include <cstdlib>

#include <xcb/xcb.h>

namespace clipwren {

namespace {

// Asks the server rather than the connection: a server that has ended is noticed only by talking to it.
bool canShowWindows() {
    const auto* application = qobject_cast<QApplication*>(QCoreApplication::instance());
    if (!application) return false;
    if (const auto* x11 = application->nativeInterface<QNativeInterface::QX11Application>()) {
        auto* connection = x11->connection();
        auto* reply = xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr);
        std::free(reply);
        return reply != nullptr;
    }
    const auto platform = QGuiApplication::platformName();
    return platform != QLatin1String("offscreen") && platform != QLatin1String("minimal");
}

QString textOf(const std::string& text) { return QString::fromStdString(text); }

// The message box takes what looks like HTML for HTML.
QString plainText(const std::string& text) {
    const auto converted = textOf(text);
    return Qt::mightBeRichText(converted) ? Qt::convertFromPlainText(converted) : converted;
}

// An ampersand would underline the next character.
QString buttonText(const std::string& text) {
    return textOf(text).replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace

int QtAlerts::runModal(const Alert& alert) {
    const int last = std::max(static_cast<int>(alert.buttons.size()) - 1, 0);
    if (!canShowWindows()) {
        log.write(alert.messageText + ": " + alert.informativeText);
        return last;
    }

    QMessageBox box;
    box.setIcon(QMessageBox::Warning);
    box.setWindowTitle(QStringLiteral("Clipwren"));
    box.setWindowFlag(Qt::WindowStaysOnTopHint);
    box.setText(plainText(alert.messageText));
    box.setInformativeText(plainText(alert.informativeText));

    std::vector<QPushButton*> buttons;
    if (alert.buttons.empty()) buttons.push_back(box.addButton(QMessageBox::Ok));
    for (const auto& text : alert.buttons)
        buttons.push_back(box.addButton(buttonText(text), QMessageBox::AcceptRole));
    box.setDefaultButton(buttons.front());
    box.setEscapeButton(buttons.back());

    // Window managers raise and focus a new window by themselves, but some not one of a program that had
    // none.
    constexpr int timeOfWindowManager = 200; // ms
    QTimer::singleShot(timeOfWindowManager, &box, [&box] {
        if (box.isActiveWindow()) return;
        box.raise();
        box.activateWindow();
    });
    box.exec();

    const auto clicked = std::find(buttons.begin(), buttons.end(), box.clickedButton());
    return clicked == buttons.end() ? last : static_cast<int>(clicked - buttons.begin());
}

} // namespace clipwren
