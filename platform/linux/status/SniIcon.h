#pragma once

#include "platform/linux/status/StatusItemState.h"

#include <QByteArray>
#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QString>

namespace clipwren {

// The pictures of a status item as org.kde.StatusNotifierItem wants them.

// Width, height and the pixels, each as the four bytes A, R, G, B, not premultiplied.
struct SniPixmap {
    int width = 0;
    int height = 0;
    QByteArray pixels;
};
using SniPixmaps = QList<SniPixmap>;

struct SniToolTip {
    QString iconName;
    SniPixmaps iconPixmaps;
    QString title;
    QString text;
};

// Called once before any of these goes over the bus.
void registerSniTypes();

// The name under which the icon theme has the picture, red if the tint says so; empty when the theme has not.
QString sniIconName(const StatusItemState& state);

// The picture at the sizes that panels use.
SniPixmaps sniPixmaps(const StatusItemState& state);

QDBusArgument& operator<<(QDBusArgument& argument, const SniPixmap& pixmap);
const QDBusArgument& operator>>(const QDBusArgument& argument, SniPixmap& pixmap);
QDBusArgument& operator<<(QDBusArgument& argument, const SniToolTip& toolTip);
const QDBusArgument& operator>>(const QDBusArgument& argument, SniToolTip& toolTip);

} // namespace clipwren

Q_DECLARE_METATYPE(clipwren::SniPixmap)
Q_DECLARE_METATYPE(clipwren::SniToolTip)
