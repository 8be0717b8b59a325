#include "platform/linux/status/SniIcon.h"

#include "platform/linux/qt/Symbols.h"
#include "platform/linux/status/StatusColors.h"

#include <QDBusMetaType>
#include <QImage>
#include <QStandardPaths>
#include <QtEndian>

#include <array>

namespace clipwren {

namespace {

constexpr std::array sizes{16, 22, 24, 32, 48, 64};

// The panel's background is unknown here: this grey stands out from white and from dark grey alike, at more
// than 3 to 1.
const QColor neutralColor(0x85, 0x85, 0x85);

SniPixmap pixmap(const QImage& picture) {
    const QImage image = picture.convertToFormat(QImage::Format_ARGB32);
    SniPixmap result{.width = image.width(), .height = image.height(), .pixels = {}};
    result.pixels.resize(image.width() * image.height() * 4);
    for (int y = 0; y < image.height(); ++y)
        qToBigEndian<quint32>(image.constScanLine(y), image.width(),
                              result.pixels.data() + y * image.width() * 4);
    return result;
}

} // namespace

void registerSniTypes() {
    qDBusRegisterMetaType<SniPixmap>();
    qDBusRegisterMetaType<SniPixmaps>();
    qDBusRegisterMetaType<SniToolTip>();
}

QString sniIconName(const StatusItemState& state) {
    QString name = symbolIconName(state.symbolName);
    QString folder = QStringLiteral("symbolic");
    if (state.tint) {
        // A symbolic icon would be recoloured by the panel; its namesake has the colour in it.
        name.remove(QLatin1String("-symbolic"));
        folder = QStringLiteral("scalable");
    }
    const QString file =
        QLatin1String("icons/hicolor/") + folder + QLatin1String("/apps/") + name + QLatin1String(".svg");
    const bool isInstalled = !QStandardPaths::locate(QStandardPaths::GenericDataLocation, file).isEmpty();
    return isInstalled ? name : QString();
}

SniPixmaps sniPixmaps(const StatusItemState& state) {
    if (symbolPath(state.symbolName).isEmpty()) return {};
    SniPixmaps result;
    for (const int size : sizes)
        result.append(pixmap(symbolImage(state.symbolName, size, tintColor(state.tint, neutralColor))));
    return result;
}

QDBusArgument& operator<<(QDBusArgument& argument, const SniPixmap& pixmap) {
    argument.beginStructure();
    argument << pixmap.width << pixmap.height << pixmap.pixels;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, SniPixmap& pixmap) {
    argument.beginStructure();
    argument >> pixmap.width >> pixmap.height >> pixmap.pixels;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const SniToolTip& toolTip) {
    argument.beginStructure();
    argument << toolTip.iconName << toolTip.iconPixmaps << toolTip.title << toolTip.text;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, SniToolTip& toolTip) {
    argument.beginStructure();
    argument >> toolTip.iconName >> toolTip.iconPixmaps >> toolTip.title >> toolTip.text;
    argument.endStructure();
    return argument;
}

} // namespace clipwren
