#include "platform/linux/qt/PermissionIcon.h"

#include "platform/linux/qt/AccessibleRole.h"
#include "platform/linux/qt/SettingsFonts.h"
#include "platform/linux/qt/Symbols.h"

#include <QPainter>

#include <algorithm>

namespace clipwren {

namespace {

constexpr double symbolUnits = 16; // the sides of the square that a symbol is drawn on

QColor colorOf(SymbolTint tint, bool isDark) {
    switch (tint) {
    case SymbolTint::systemGreen: return isDark ? QColor(0x32, 0xd7, 0x4b) : QColor(0x24, 0x8a, 0x3d);
    case SymbolTint::systemRed: return isDark ? QColor(0xff, 0x45, 0x3a) : QColor(0xd7, 0x00, 0x15);
    }
    return {};
}

} // namespace

PermissionIcon::PermissionIcon() {
    setAccessibleRole(*this, QAccessible::Graphic);
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
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    // A symbol of size 16 has its 16 units, and a little air around its disc, in 18 of the row's 20 points.
    const double side = width() * 0.9;
    painter.translate((width() - side) / 2, (height() - side) / 2);
    painter.scale(side / symbolUnits, side / symbolUnits);
    const bool isDark = palette().color(QPalette::Window).lightness() < 128;
    painter.fillPath(symbolPath(symbolName), colorOf(tint, isDark));
}

} // namespace clipwren
