#pragma once

#include "platform/StatusItem.h"

#include <QColor>

#include <optional>

namespace clipwren {

// The colour that a tint stands for; without one the panel's own.
inline QColor tintColor(std::optional<Tint> tint, const QColor& panelColor) {
    constexpr QRgb systemRed = 0xFFFF3B30;
    return tint ? QColor(systemRed) : panelColor;
}

} // namespace clipwren
