#pragma once

#include <QFont>
#include <QFontInfo>

namespace clipwren {

// The settings window's sizes count in units of which a row's text has 13: the user's own font, whatever its
// size, is 13 of them.
constexpr double rowTextSize = 13;

inline int sizeInPixels(const QFont& userFont, double size) {
    return qRound(QFontInfo(userFont).pixelSize() * size / rowTextSize);
}

inline QFont fontOfSize(const QFont& userFont, double size, QFont::Weight weight = QFont::Normal) {
    QFont font = userFont;
    font.setPixelSize(sizeInPixels(userFont, size));
    font.setWeight(weight);
    return font;
}

} // namespace clipwren
