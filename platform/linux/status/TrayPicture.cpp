#include "platform/linux/status/TrayPicture.h"

#include "platform/linux/qt/QtCanvas.h"
#include "platform/linux/qt/Symbols.h"
#include "platform/linux/status/StatusColors.h"

#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>

namespace clipwren {

namespace {

// The largest of the usual icon sizes that fits: pictures look alike across a panel's items, and crisp.
int pictureSide(int room) {
    constexpr std::array usual{128, 96, 64, 48, 32, 24, 22, 16};
    for (const int side : usual)
        if (side <= room) return side;
    return std::max(room, 1);
}

struct Layout {
    Font font;
    Size text;
    int side = 1;
    int width() const { return static_cast<int>(std::ceil(text.width)) + side; }
};

Layout layOut(const StatusItemState& state, int height, const TrayPictureStyle& style) {
    Layout layout{.font = state.title.font, .text = {}, .side = pictureSide(height)};
    if (state.shownText().empty()) return layout;
    layout.font.size *= style.scale;
    layout.text = measureText(state.shownText(), layout.font, style.face);
    if (layout.text.height > height) {
        layout.font.size *= height / layout.text.height;
        layout.text = measureText(state.shownText(), layout.font, style.face);
    }
    return layout;
}

} // namespace

int trayPictureWidth(const StatusItemState& state, int height, const TrayPictureStyle& style) {
    return layOut(state, height, style).width();
}

QImage trayPicture(const StatusItemState& state, QSize size, const TrayPictureStyle& style) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const Layout layout = layOut(state, size.height(), style);
    const bool hasText = !state.shownText().empty() && layout.width() <= size.width();
    const int side = hasText ? layout.side : pictureSide(std::min(size.width(), size.height()));
    const int width = hasText ? layout.width() : side;
    const int left = (size.width() - width) / 2;

    QPainter painter(&image);
    if (hasText) {
        const Color color{style.color.redF(), style.color.greenF(), style.color.blueF(),
                          style.color.alphaF()};
        // On whole pixels, so that the text does not dance.
        const double bottom = std::round((size.height() - layout.text.height) / 2);
        QtCanvas(painter, size.height(), style.face)
            .drawText(state.shownText(), {static_cast<double>(left), bottom}, layout.font, color);
    }
    painter.drawImage(QPoint(left + width - side, (size.height() - side) / 2),
                      symbolImage(state.symbolName, side, tintColor(state.tint, style.color)));
    return image;
}

} // namespace clipwren
