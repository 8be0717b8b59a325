#include "platform/linux/qt/PermissionIcon.h"

#include "platform/linux/qt/SettingsFonts.h"

#include <QAccessibleWidget>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace clipwren {

namespace {

// Qt knows no role for a widget of one's own; a graphic is what reads out only its name.
QAccessibleInterface* describe(const QString&, QObject* object) {
    auto* icon = dynamic_cast<PermissionIcon*>(object);
    return icon ? new QAccessibleWidget(icon, QAccessible::Graphic) : nullptr;
}

QColor colorOf(SymbolTint tint, bool isDark) {
    switch (tint) {
    case SymbolTint::systemGreen: return isDark ? QColor(0x32, 0xd7, 0x4b) : QColor(0x24, 0x8a, 0x3d);
    case SymbolTint::systemRed: return isDark ? QColor(0xff, 0x45, 0x3a) : QColor(0xd7, 0x00, 0x15);
    }
    return {};
}

// In a square with sides of 1.
QPainterPath markOf(const std::string& symbolName) {
    QPainterPath mark;
    if (symbolName == "checkmark.circle.fill") {
        mark.moveTo(0.29, 0.53);
        mark.lineTo(0.44, 0.68);
        mark.lineTo(0.71, 0.34);
    } else if (symbolName == "xmark.circle.fill") {
        mark.moveTo(0.33, 0.33);
        mark.lineTo(0.67, 0.67);
        mark.moveTo(0.67, 0.33);
        mark.lineTo(0.33, 0.67);
    }
    return mark;
}

} // namespace

PermissionIcon::PermissionIcon() {
    static const bool isDescribed = (QAccessible::installFactory(describe), true);
    static_cast<void>(isDescribed);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void PermissionIcon::setSymbol(const std::string& newSymbolName, SymbolTint newTint) {
    symbolName = newSymbolName;
    tint = newTint;
    update();
}

QSize PermissionIcon::sizeHint() const {
    const int side = std::max(20, sizeInPixels(font(), 20));
    return {side, side};
}

void PermissionIcon::paintEvent(QPaintEvent*) {
    const QPainterPath mark = markOf(symbolName);
    if (mark.isEmpty()) return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    // The circle has four fifths of the width that the row keeps for it, like a symbol of size 16 in 20.
    const double side = width() * 0.8;
    painter.translate((width() - side) / 2, (height() - side) / 2);
    painter.scale(side, side);
    const QColor ground = palette().color(QPalette::Window);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colorOf(tint, ground.lightness() < 128));
    painter.drawEllipse(QRectF(0, 0, 1, 1));
    // The mark is the window showing through.
    painter.strokePath(mark, QPen(ground, 0.125, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
}

} // namespace clipwren
