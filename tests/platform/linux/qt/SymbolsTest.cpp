#include "platform/linux/qt/Symbols.h"

#include <gtest/gtest.h>

#include <array>

namespace clipwren {

namespace {

constexpr std::array symbols{"record.circle", "record.circle.fill", "arrow.triangle.2.circlepath",
                             "checkmark.circle.fill", "xmark.circle.fill"};

double coveredShare(const QImage& image) {
    double sum = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            sum += qAlpha(image.pixel(x, y)) / 255.0;
    return sum / (image.width() * image.height());
}

TEST(Symbols, AllHaveAPictureInsideTheirSquare) {
    for (const char* name : symbols) {
        EXPECT_FALSE(symbolPath(name).isEmpty()) << name;
        EXPECT_TRUE(QRectF(0, 0, 16, 16).contains(symbolPath(name).boundingRect())) << name;
        EXPECT_TRUE(symbolIconName(name).startsWith(QStringLiteral("clipwren-"))) << name;
        EXPECT_TRUE(symbolIconName(name).endsWith(QStringLiteral("-symbolic"))) << name;
    }
    EXPECT_TRUE(symbolPath("no.such.symbol").isEmpty());
    EXPECT_TRUE(symbolIconName("no.such.symbol").isEmpty());
    EXPECT_EQ(coveredShare(symbolImage("no.such.symbol", 16, Qt::black)), 0);
}

TEST(Symbols, CoverTheSameShareAtEverySize) {
    for (const char* name : symbols) {
        const double exact = coveredShare(symbolImage(name, 256, Qt::black));
        EXPECT_GT(exact, 0.1) << name;
        for (const int size : {16, 22, 24, 32, 48, 64})
            EXPECT_NEAR(coveredShare(symbolImage(name, size, Qt::black)), exact, 0.01) << name << ' ' << size;
    }
}

TEST(Symbols, TakeTheColour) {
    const QImage dot = symbolImage("record.circle", 64, QColor(10, 200, 30));
    EXPECT_EQ(dot.pixelColor(32, 32), QColor(10, 200, 30));
    EXPECT_EQ(dot.pixelColor(0, 0).alpha(), 0);
    EXPECT_EQ(dot.pixelColor(32, 14).alpha(), 0) << "between dot and ring";
    EXPECT_EQ(dot.pixelColor(32, 7), QColor(10, 200, 30)) << "on the ring";
}

TEST(Symbols, ReadSvgData) {
    const QPainterPath square = pathFromSvgData("M1 2L5,2 5 6L1 6Z");
    EXPECT_EQ(square.boundingRect(), QRectF(1, 2, 4, 4));
    EXPECT_TRUE(square.contains(QPointF(3, 4)));
    const QPainterPath ring = pathFromSvgData("M0 0L9 0L9 9L0 9ZM3 3L6 3L6 6L3 6Z");
    EXPECT_TRUE(ring.contains(QPointF(1, 1)));
    EXPECT_FALSE(ring.contains(QPointF(4, 4)));
    const QPainterPath curve = pathFromSvgData("M0 0C0 4 -4 8 -8 8");
    EXPECT_EQ(curve.currentPosition(), QPointF(-8, 8));
}

TEST(Symbols, StopAtSvgDataTheyDoNotKnow) {
    for (const char* data : {"", "Q", "M", "M1", "M1 x", "L", "Cz", "M1 1C2 2 3 3", "m1 1"})
        EXPECT_TRUE(pathFromSvgData(data).boundingRect().isEmpty()) << data;
    EXPECT_EQ(pathFromSvgData("M0 0L2 2A1 1 0 0 0 9 9").boundingRect(), QRectF(0, 0, 2, 2));
}

} // namespace

} // namespace clipwren
