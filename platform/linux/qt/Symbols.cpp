#include "platform/linux/qt/Symbols.h"

#include <QFile>
#include <QPainter>

#include <array>
#include <charconv>
#include <map>
#include <optional>
#include <string>

namespace clipwren {

namespace {

constexpr double gridUnits = 16;

struct Name {
    std::string_view symbol;
    const char* icon;
};

constexpr std::array names{
    Name{"record.circle", "clipwren-record-symbolic"},
    Name{"record.circle.fill", "clipwren-recording-symbolic"},
    Name{"arrow.triangle.2.circlepath", "clipwren-saving-symbolic"},
    Name{"checkmark.circle.fill", "clipwren-granted-symbolic"},
    Name{"xmark.circle.fill", "clipwren-missing-symbolic"},
};

// Reads numbers and commands one after the other.
class SvgData {
public:
    explicit SvgData(std::string_view text) : text(text) {}

    std::optional<char> command() {
        skipSeparators();
        if (text.empty()) return std::nullopt;
        const char letter = text.front();
        text.remove_prefix(1);
        return letter;
    }
    bool numberFollows() {
        skipSeparators();
        return !text.empty() &&
               std::string_view("+-.0123456789").find(text.front()) != std::string_view::npos;
    }
    std::optional<QPointF> point() {
        const auto x = number();
        const auto y = x ? number() : std::nullopt;
        if (!y) return std::nullopt;
        return QPointF(*x, *y);
    }

private:
    void skipSeparators() { text.remove_prefix(std::min(text.find_first_not_of(" ,\t\r\n"), text.size())); }
    std::optional<double> number() {
        skipSeparators();
        double value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc()) return std::nullopt;
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        return value;
    }

    std::string_view text;
};

QPainterPath loadPath(const char* iconName) {
    QFile file(QStringLiteral(":/symbols/") + QLatin1String(iconName) + QStringLiteral(".svg"));
    if (!file.open(QIODevice::ReadOnly)) return {};
    const std::string text = file.readAll().toStdString();
    constexpr std::string_view attribute = " d=\"";
    const auto begin = text.find(attribute);
    if (begin == std::string::npos) return {};
    const auto data = std::string_view(text).substr(begin + attribute.size());
    return pathFromSvgData(data.substr(0, data.find('"')));
}

} // namespace

QPainterPath pathFromSvgData(std::string_view data) {
    QPainterPath path;
    path.setFillRule(Qt::OddEvenFill);
    SvgData reader(data);
    while (const auto command = reader.command()) {
        if (*command == 'Z') {
            path.closeSubpath();
            continue;
        }
        if (*command != 'M' && *command != 'L' && *command != 'C') return path;
        do {
            const auto first = reader.point();
            if (!first) return path;
            if (*command == 'M') {
                path.moveTo(*first);
            } else if (*command == 'L') {
                path.lineTo(*first);
            } else {
                const auto second = reader.point();
                const auto end = second ? reader.point() : std::nullopt;
                if (!end) return path;
                path.cubicTo(*first, *second, *end);
            }
        } while (reader.numberFollows());
    }
    return path;
}

const QPainterPath& symbolPath(std::string_view symbolName) {
    static const QPainterPath none;
    static std::map<std::string_view, QPainterPath> loaded;
    for (const Name& name : names) {
        if (name.symbol != symbolName) continue;
        const auto [entry, isNew] = loaded.try_emplace(name.symbol);
        if (isNew) entry->second = loadPath(name.icon);
        return entry->second;
    }
    return none;
}

QString symbolIconName(std::string_view symbolName) {
    for (const Name& name : names)
        if (name.symbol == symbolName) return QLatin1String(name.icon);
    return {};
}

QImage symbolImage(std::string_view symbolName, int pixels, const QColor& color) {
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(pixels / gridUnits, pixels / gridUnits);
    painter.fillPath(symbolPath(symbolName), color);
    return image;
}

} // namespace clipwren
