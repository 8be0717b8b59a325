#include "platform/linux/qt/Symbols.h"
#include "platform/linux/status/LinuxStatusBar.h"
#include "platform/linux/status/MenuLayout.h"
#include "platform/linux/status/SniIcon.h"
#include "platform/linux/status/TrayPicture.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Screens.h"
#include "tests/conformance/EventLoop.h"
#include "tests/conformance/StatusItemConformance.h"

#include <QAction>
#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusServiceWatcher>
#include <QDBusVirtualObject>
#include <QWidget>

namespace clipwren {

namespace {

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");

// A panel: collects the items on a connection of its own and asks them what a panel asks.
class Panel : public QDBusVirtualObject {
public:
    Panel() : bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, nextName())) {
        registerMenuTypes();
        registerSniTypes();
        bus.registerVirtualObject(QStringLiteral("/StatusNotifierWatcher"), this);
        if (!bus.registerService(watcherName)) ADD_FAILURE() << "another panel is there";
    }
    ~Panel() override {
        bus.unregisterService(watcherName);
        const QString name = bus.name();
        bus = QDBusConnection(QString());
        QDBusConnection::disconnectFromBus(name);
    }

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() != QLatin1String("RegisterStatusNotifierItem")) return false;
        items.append(message.arguments().value(0).toString());
        return connection.send(message.createReply());
    }

    QList<QString> items; // as they came

    bool has(const QString& item) {
        auto question = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameHasOwner"));
        question << item;
        return ask(question).arguments().value(0).toBool();
    }
    QVariant property(const QString& name) {
        return call(QStringLiteral("/StatusNotifierItem"), QStringLiteral("org.freedesktop.DBus.Properties"),
                    QStringLiteral("Get"), {itemInterface, name})
            .value(0)
            .value<QDBusVariant>()
            .variant();
    }
    QVariantList call(const QString& path, const QString& interface, const QString& method,
                      const QVariantList& arguments) {
        auto message = QDBusMessage::createMethodCall(items.last(), path, interface, method);
        message.setArguments(arguments);
        return ask(message).arguments();
    }

private:
    static QString nextName() {
        static int count = 0;
        return QStringLiteral("panel%1").arg(++count);
    }
    // The item lives on this thread too: no blocking.
    QDBusMessage ask(const QDBusMessage& message) {
        // What the item was told before has arrived: changes are announced in the next round of the loop.
        runEventLoop(0.01);
        const QDBusPendingCall answer = bus.asyncCall(message);
        EXPECT_TRUE(runEventLoopUntil([&] { return answer.isFinished(); }));
        runEventLoop(0.01);
        return answer.reply();
    }

    QDBusConnection bus;
};

struct SniSubject {
    std::unique_ptr<X11Connection> connection = std::move(*X11Connection::open());
    X11Screens screens{*connection};
    std::unique_ptr<Panel> panel = std::make_unique<Panel>();
    LinuxStatusBar bar{*connection, screens};
    std::unique_ptr<StatusItem> made = bar.makeStatusItem();

    SniSubject() {
        EXPECT_TRUE(runEventLoopUntil([this] { return !panel->items.isEmpty(); }));
    }

    StatusItem& item() { return *made; }
    void drop() { made.reset(); }
    bool exists() { return panel->has(panel->items.last()); }
    std::string text() { return panel->property(QStringLiteral("XAyatanaLabel")).toString().toStdString(); }
    std::string toolTip() {
        return qdbus_cast<SniToolTip>(panel->property(QStringLiteral("ToolTip"))).title.toStdString();
    }
    bool isRed() {
        const auto pixmaps = qdbus_cast<SniPixmaps>(panel->property(QStringLiteral("IconPixmap")));
        if (pixmaps.isEmpty()) return false;
        const SniPixmap& largest = pixmaps.last();
        const auto* middle = reinterpret_cast<const unsigned char*>(largest.pixels.constData()) +
                             (largest.height / 2 * largest.width + largest.width / 2) * 4;
        return middle[0] == 0xFF && middle[1] == 0xFF && middle[2] == 0x3B && middle[3] == 0x30;
    }
    QVariantList askMenu(const char* method, const QVariantList& arguments) {
        return panel->call(QStringLiteral("/MenuBar"), menuInterface, QLatin1String(method), arguments);
    }
    MenuNode layout() { return qdbus_cast<MenuNode>(askMenu("GetLayout", {0, -1, QStringList()}).value(1)); }
    std::vector<std::string> menu() {
        std::vector<std::string> titles;
        const MenuNode root = layout();
        for (const MenuNode& line : root.children)
            titles.push_back(line.properties.value(QStringLiteral("label"))
                                 .toString()
                                 .replace(QLatin1String("__"), QLatin1String("_"))
                                 .toStdString());
        return titles;
    }
    void sendEvent(int id, const char* event) {
        askMenu("Event", {id, QLatin1String(event), QVariant::fromValue(QDBusVariant(0)), 0u});
    }
    bool click() {
        if (panel->property(QStringLiteral("ItemIsMenu")).toBool()) {
            sendEvent(0, "opened");
            return true;
        }
        panel->call(QStringLiteral("/StatusNotifierItem"), itemInterface, QStringLiteral("Activate"), {5, 5});
        return false;
    }
    void choose(int line) { sendEvent(line + 1, "clicked"); }
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Sni, StatusItemConformance, SniSubject);

TEST(SniStatusItem, APanelThatOpensTheMenuAllTheSameHasClicked) {
    SniSubject subject;
    int stopped = 0;
    subject.item().setMenu(nullptr);
    subject.item().setAction([&] { ++stopped; });
    EXPECT_TRUE(subject.layout().children.isEmpty());
    subject.askMenu("AboutToShow", {0});
    EXPECT_EQ(stopped, 0) << "panels ask this without a click too";
    subject.sendEvent(0, "opened");
    EXPECT_EQ(stopped, 1);
    subject.sendEvent(0, "closed");
    EXPECT_EQ(stopped, 1);
}

TEST(SniStatusItem, AnyKindOfClickStops) {
    SniSubject subject;
    int stopped = 0;
    subject.item().setAction([&] { ++stopped; });
    for (const char* kind : {"Activate", "SecondaryActivate", "ContextMenu"})
        subject.panel->call(QStringLiteral("/StatusNotifierItem"), itemInterface, QLatin1String(kind),
                            {5, 5});
    EXPECT_EQ(stopped, 3);
    subject.panel->call(QStringLiteral("/StatusNotifierItem"), itemInterface, QStringLiteral("Scroll"),
                        {5, QStringLiteral("vertical")});
    EXPECT_EQ(stopped, 3);
}

TEST(SniStatusItem, APanelThatAsksForTheMenuGetsOurs) {
    SniSubject subject;
    bool chosen = false;
    subject.item().setMenu(std::make_shared<const Menu>(
        Menu{{{.title = "Quit & go", .action = [&] { chosen = true; }, .keyEquivalent = "q"}}}));
    const auto ours = [] { return QApplication::activePopupWidget(); };
    subject.panel->call(QStringLiteral("/StatusNotifierItem"), itemInterface, QStringLiteral("Activate"),
                        {5, 5});
    ASSERT_TRUE(runEventLoopUntil([&] { return ours() != nullptr; }));
    ASSERT_EQ(ours()->actions().size(), 1);
    EXPECT_EQ(ours()->actions().first()->text(), QStringLiteral("Quit && go"));
    // The menu goes with the state that it belongs to.
    subject.item().setMenu(nullptr);
    EXPECT_TRUE(runEventLoopUntil([&] { return ours() == nullptr; }));
    EXPECT_FALSE(chosen);
}

TEST(SniStatusItem, IsShownAgainByThePanelThatComesNext) {
    SniSubject subject;
    subject.item().setToolTip("Clipwren");
    subject.panel.reset();
    runEventLoop(0.05);
    subject.panel = std::make_unique<Panel>();
    ASSERT_TRUE(runEventLoopUntil([&] { return !subject.panel->items.isEmpty(); }));
    EXPECT_EQ(subject.toolTip(), "Clipwren");
    EXPECT_EQ(subject.panel->items.size(), 1);
}

TEST(SniStatusItem, AnUnknownSymbolIsNoPicture) {
    SniSubject subject;
    subject.item().setSymbolImage("no.such.symbol", "Clipwren");
    EXPECT_EQ(subject.panel->property(QStringLiteral("IconName")).toString(), QString());
    EXPECT_TRUE(qdbus_cast<SniPixmaps>(subject.panel->property(QStringLiteral("IconPixmap"))).isEmpty());
}

TEST(TrayPicture, IsAsWideAsTextAndPicture) {
    StatusItemState state{.symbolName = "record.circle.fill", .imagePosition = ImagePosition::imageRight};
    const TrayPictureStyle style{.color = Qt::black, .face = QApplication::font()};
    EXPECT_EQ(trayPictureWidth(state, 22, style), 22);
    state.title = {"3.2 MB ", {.size = 12, .weight = FontWeight::medium, .monospacedDigits = true}};
    const int withText = trayPictureWidth(state, 22, style);
    EXPECT_GT(withText, 22 + 30);
    state.title.text = "1.1 MB ";
    EXPECT_EQ(trayPictureWidth(state, 22, style), withText) << "digits must not make it jump";
    state.imagePosition = ImagePosition::imageOnly;
    EXPECT_EQ(trayPictureWidth(state, 22, style), 22);
}

TEST(TrayPicture, PutsTheTextLeftOfThePictureInThePanelsColour) {
    const StatusItemState state{.symbolName = "record.circle.fill",
                                .tint = Tint::systemRed,
                                .imagePosition = ImagePosition::imageRight,
                                .title = {"8.8 MB ", {.size = 12}}};
    const TrayPictureStyle style{.color = Qt::blue, .face = QApplication::font()};
    const int width = trayPictureWidth(state, 22, style);
    const QImage picture = trayPicture(state, {width, 22}, style);
    int rightmostBlue = -1, leftmostRed = width;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < width; ++x) {
            const QRgb pixel = picture.pixel(x, y);
            if (qBlue(pixel) > 200 && qRed(pixel) < 50) rightmostBlue = std::max(rightmostBlue, x);
            if (qRed(pixel) > 200 && qBlue(pixel) < 80) leftmostRed = std::min(leftmostRed, x);
        }
    EXPECT_GT(rightmostBlue, 10);
    EXPECT_GT(leftmostRed, rightmostBlue);
    EXPECT_LT(leftmostRed, width);
}

TEST(TrayPicture, LeavesTheTextOutWhereItDoesNotFit) {
    const StatusItemState state{.symbolName = "record.circle.fill",
                                .imagePosition = ImagePosition::imageRight,
                                .title = {"8.8 MB ", {.size = 12}}};
    const TrayPictureStyle style{.color = Qt::blue, .face = QApplication::font()};
    const StatusItemState bare{.symbolName = "record.circle.fill"};
    EXPECT_EQ(trayPicture(state, {24, 24}, style), trayPicture(bare, {24, 24}, style));
}

} // namespace clipwren
