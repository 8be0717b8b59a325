#include "platform/linux/Files.h"
#include "platform/linux/XdgLoginItem.h"
#include "tests/conformance/EventLoop.h"
#include "tests/conformance/LoginItemConformance.h"
#include "tests/support/TemporaryFolder.h"

#include <QProcess>
#include <QStringList>

#include <string>

namespace clipwren {

namespace fs = std::filesystem;

struct XdgLoginItemSubject {
    TemporaryFolder folder;
    fs::path autostart = folder.path() / "autostart";
    fs::path entry = autostart / "app.clipwren.Clipwren.desktop";
    XdgLoginItem real{folder.path(), "/bin/true"};

    LoginItem& loginItem() { return real; }
    std::string text() const { return readSmallFile(entry, 10'000).value_or(""); }
    void append(const std::string& line) { ASSERT_TRUE(replaceFile(entry, text() + line + "\n")); }
    void disable() { append("Hidden=true"); }
    // A file where the folder should be stops the administrator too.
    void refuse(bool refuses) {
        if (refuses)
            ASSERT_TRUE(replaceFile(autostart, "in the way"));
        else
            fs::remove(autostart);
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Xdg, LoginItemConformance, XdgLoginItemSubject);

TEST(XdgLoginItem, KnowsTheSwitchesOfOtherDesktops) {
    for (const char* line : {"X-GNOME-Autostart-enabled=false", "X-MATE-Autostart-enabled=false"}) {
        XdgLoginItemSubject subject;
        ASSERT_TRUE(subject.real.registerItem());
        subject.append(line);
        EXPECT_EQ(subject.real.status(), LoginItemStatus::requiresApproval);
    }
}

TEST(XdgLoginItem, IsNotFoundWithoutAProgramToStart) {
    XdgLoginItemSubject subject;
    for (const char* text : {"", "garbage", "[Desktop Entry]\n", "[Desktop Entry]\nExec=\n",
                             "[Desktop Entry]\nExec=/gone/away\n", "[Desktop Entry]\nExec=/tmp\n"}) {
        ASSERT_TRUE(replaceFile(subject.entry, text));
        EXPECT_EQ(subject.real.status(), LoginItemStatus::notFound) << text;
    }
    fs::remove(subject.entry);
    fs::create_symlink("/dev/null", subject.entry);
    EXPECT_EQ(subject.real.status(), LoginItemStatus::notFound);
    EXPECT_TRUE(subject.real.unregisterItem());
    EXPECT_EQ(subject.real.status(), LoginItemStatus::notRegistered);
}

TEST(XdgLoginItem, RegistersNothingWithoutKnowingItsOwnPath) {
    XdgLoginItemSubject subject;
    XdgLoginItem nameless(subject.folder.path(), {});
    EXPECT_FALSE(nameless.registerItem());
    EXPECT_FALSE(fs::exists(subject.entry));
}

TEST(XdgLoginItem, StartsProgramsInFoldersOfAnyName) {
    for (const char* name : {"plain", "with space", "it's \"quoted\"", "100%", "%f %U", "$HOME", "`id`",
                             "back\\slash\\", "semi;colon&and|pipe", "ümläut→"}) {
        XdgLoginItemSubject subject;
        const fs::path program = subject.folder.path() / name / "pro gram";
        const fs::path mark = subject.folder.path() / "started";
        ASSERT_TRUE(replaceFile(program, "#!/bin/sh\necho \"$#\" > '" + mark.string() + "'\n"));
        fs::permissions(program, fs::perms::owner_all);
        XdgLoginItem item(subject.folder.path(), program);
        ASSERT_TRUE(item.registerItem());
        EXPECT_EQ(item.status(), LoginItemStatus::enabled);

        // A desktop's own reader of such files.
        ASSERT_EQ(QProcess::execute(QStringLiteral("gio"), {QStringLiteral("launch"),
                                                            QString::fromStdString(subject.entry.string())}),
                  0);
        EXPECT_TRUE(runEventLoopUntil([&] { return readSmallFile(mark, 100) == "0\n"; })) << name;
    }
}

} // namespace clipwren
