#include "platform/linux/qt/DBusWorkspace.h"
#include "tests/conformance/Environment.h"
#include "tests/conformance/EventLoop.h"
#include "tests/conformance/WorkspaceConformance.h"
#include "tests/support/TemporaryFolder.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QStringList>
#include <QUrl>

#include <fstream>
#include <string>

namespace clipwren {

// A file manager on the session bus, on a connection of its own.
class BusFileManager : public QDBusVirtualObject {
public:
    bool refuses = false;
    std::vector<std::filesystem::path> shown;

    BusFileManager() {
        bus.registerVirtualObject(QStringLiteral("/org/freedesktop/FileManager1"), this);
        EXPECT_TRUE(bus.registerService(QStringLiteral("org.freedesktop.FileManager1")));
    }
    ~BusFileManager() override { QDBusConnection::disconnectFromBus(QStringLiteral("file manager")); }

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() != QLatin1String("ShowFolders") || refuses) return false;
        EXPECT_EQ(message.signature(), QStringLiteral("ass"));
        const auto addresses = message.arguments().value(0).toStringList();
        for (const auto& address : addresses)
            shown.push_back(QUrl(address).toLocalFile().toStdString());
        return connection.send(message.createReply());
    }

private:
    QDBusConnection bus =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("file manager"));
};

struct DBusWorkspaceSubject {
    BusFileManager manager;
    DBusWorkspace real;

    Workspace& workspace() { return real; }
    std::vector<std::filesystem::path> shown(std::size_t count) {
        EXPECT_TRUE(runEventLoopUntil([&] { return manager.shown.size() >= count; }));
        return manager.shown;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(DBus, WorkspaceConformance, DBusWorkspaceSubject);

TEST(DBusWorkspace, TakesXdgOpenWhenTheFileManagerRefuses) {
    const TemporaryFolder folder;
    const auto program = folder.path() / "xdg-open", note = folder.path() / "note";
    std::ofstream(program) << "#!/bin/sh\nprintf %s \"$1\" >" << note << ".part\nmv " << note << ".part "
                           << note << "\n";
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    const Environment path("PATH", folder.path().string() + ":/usr/bin:/bin");

    BusFileManager manager;
    manager.refuses = true;
    DBusWorkspace().openFolder("/tmp/a b");
    ASSERT_TRUE(runEventLoopUntil([&] { return std::filesystem::exists(note); }));
    std::string argument;
    std::getline(std::ifstream(note), argument);
    EXPECT_EQ(argument, "/tmp/a b");
}

} // namespace clipwren
