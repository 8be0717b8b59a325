#pragma once

#include <QColor>
#include <QImage>
#include <QPainterPath>
#include <QString>

#include <string_view>

namespace clipwren {

// The pictures that the core's symbol names stand for. Each is drawn once, as one path of an SVG on a grid of
// 16 units: installed for icon themes to recolour, and carried inside the program for what it paints itself.
// Main thread only.

// On a square of 16 units, y down; empty for a name that stands for nothing.
const QPainterPath& symbolPath(std::string_view symbolName);

// What the icon theme calls it; empty for a name that stands for nothing.
QString symbolIconName(std::string_view symbolName);

// A square picture, transparent but for the symbol.
QImage symbolImage(std::string_view symbolName, int pixels, const QColor& color);

// The outline that the `d` attribute of an SVG path describes. Of its commands M, L, C and Z are known, all
// absolute; from anything else on the rest is left out.
QPainterPath pathFromSvgData(std::string_view data);

} // namespace clipwren
