#include "platform/linux/XdgFolders.h"
#include "tests/conformance/Environment.h"
#include "tests/conformance/FoldersConformance.h"
#include "tests/support/TemporaryFolder.h"

#include <fstream>
#include <iomanip>

#include <pwd.h>
#include <unistd.h>

namespace clipwren {

struct XdgFoldersSubject {
    TemporaryFolder folder;
    Environment homeVariable{"HOME", folder.path().string()};
    Environment configuration{"XDG_CONFIG_HOME", std::nullopt};
    XdgFolders real;

    Folders& folders() { return real; }
    std::filesystem::path home() { return folder.path(); }
    void report(const std::optional<std::filesystem::path>& pictures) {
        std::filesystem::create_directories(home() / ".config");
        std::ofstream file(home() / ".config" / "user-dirs.dirs");
        if (pictures) file << "XDG_PICTURES_DIR=" << std::quoted(pictures->string()) << '\n';
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Xdg, FoldersConformance, XdgFoldersSubject);

TEST(XdgFolders, TakesOnlyAbsolutePathsFromTheEnvironment) {
    const Environment home("HOME", "/home/ada");
    const XdgFolders folders;
    {
        const Environment configuration("XDG_CONFIG_HOME", "/etc/mine");
        EXPECT_EQ(folders.configuration(), std::filesystem::path("/etc/mine"));
    }
    for (const char* ignored : {"", "relative/path"}) {
        const Environment configuration("XDG_CONFIG_HOME", ignored);
        EXPECT_EQ(folders.configuration(), std::filesystem::path("/home/ada/.config"));
    }
}

TEST(XdgFolders, AsksTheSystemForTheHomeFolderWithoutVariable) {
    const auto* entry = getpwuid(getuid());
    ASSERT_TRUE(entry);
    const std::filesystem::path expected = entry->pw_dir;
    for (const auto& value : {std::optional<std::string>(), std::optional<std::string>("relative")}) {
        const Environment home("HOME", value);
        EXPECT_EQ(XdgFolders().home(), expected);
    }
}

TEST(XdgFolders, FollowsTheTimeZone) {
    const XdgFolders folders;
    const auto minutes = [&](const char* zone) {
        const Environment variable("TZ", zone);
        const auto time = folders.now();
        return time.hour * 60 + time.minute;
    };
    const int west = minutes("WEST+5"), east = minutes("EAST-3:30");
    EXPECT_NEAR((east - west + 1440) % 1440, 8 * 60 + 30, 1);
}

} // namespace clipwren
