#pragma once

#include "platform/linux/status/StatusItemState.h"

#include <QColor>
#include <QFont>
#include <QImage>
#include <QSize>

namespace clipwren {

// What our window in the tray shows: the text, then the picture. Sizes in pixels; `scale` is pixels a point.
struct TrayPictureStyle {
    QColor color; // the panel's text colour
    QFont face;
    double scale = 1;
};

// The width that a tray window of this height needs, at least 1.
int trayPictureWidth(const StatusItemState& state, int height, const TrayPictureStyle& style);

// Transparent but for text and picture, which stand in the middle. Where the text does not fit beside the
// picture there is only the picture, as large as fits.
QImage trayPicture(const StatusItemState& state, QSize size, const TrayPictureStyle& style);

} // namespace clipwren
