#include "platform/linux/Files.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>

#include <sys/resource.h>
#include <sys/stat.h>

namespace clipwren {

namespace {

namespace fs = std::filesystem;

struct Files : testing::Test {
    TemporaryFolder folder;
    fs::path file = folder.path() / "file";

    static void fill(const fs::path& path, std::string_view bytes) { std::ofstream(path) << bytes; }
    static std::string bytesOf(const fs::path& path) { return readSmallFile(path, 1000).value_or("(none)"); }
    static mode_t modeOf(const fs::path& path) {
        struct stat status{};
        return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
    }
    std::size_t count() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder.path()), {}));
    }
};

} // namespace

TEST_F(Files, ReadsUpToTheLimit) {
    fill(file, std::string(10'000, 'x'));
    EXPECT_EQ(readSmallFile(file, 10'000), std::string(10'000, 'x'));
    EXPECT_EQ(readSmallFile(file, 9'999), std::nullopt);
    EXPECT_EQ(readSmallFile("/dev/zero", 100), std::nullopt);
}

TEST_F(Files, DoesNotWaitForAPipe) {
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    EXPECT_EQ(readSmallFile(file, 100), std::nullopt);
    EXPECT_FALSE(replaceFile(file, "new"));
}

TEST_F(Files, MakesAPrivateFileAndItsFolders) {
    const auto deep = folder.path() / "a" / "b" / "file";
    EXPECT_TRUE(replaceFile(deep, "new"));
    EXPECT_EQ(bytesOf(deep), "new");
    EXPECT_EQ(modeOf(deep), 0600u);
    EXPECT_EQ(modeOf(deep.parent_path()), 0700u);
}

TEST_F(Files, KeepsPermissionsAndLeavesNothingBehind) {
    fill(file, "old");
    chmod(file.c_str(), 0640);
    EXPECT_TRUE(replaceFile(file, "new"));
    EXPECT_EQ(bytesOf(file), "new");
    EXPECT_EQ(modeOf(file), 0640u);
    EXPECT_EQ(count(), 1u);
}

TEST_F(Files, FollowsALinkAndKeepsIt) {
    fs::create_directory(folder.path() / "elsewhere");
    const auto target = folder.path() / "elsewhere" / "target";
    fill(target, "old");
    fs::create_symlink("elsewhere/target", folder.path() / "step");
    fs::create_symlink("step", file);
    EXPECT_TRUE(replaceFile(file, "new"));
    EXPECT_TRUE(fs::is_symlink(file));
    EXPECT_EQ(bytesOf(target), "new");

    fs::remove(target);
    EXPECT_TRUE(replaceFile(file, "again"));
    EXPECT_TRUE(fs::is_symlink(file));
    EXPECT_EQ(bytesOf(target), "again");
}

TEST_F(Files, RefusesWhatItCannotReplace) {
    fs::create_symlink("file", file);
    EXPECT_FALSE(replaceFile(file, "new"));
    fs::remove(file);
    fs::create_directory(file);
    EXPECT_FALSE(replaceFile(file, "new"));
    EXPECT_TRUE(fs::is_directory(file));
    fs::remove(file);
    fill(file, "a file");
    EXPECT_FALSE(replaceFile(file / "below", "new"));
    EXPECT_FALSE(replaceFile("/proc/clipwren/file", "new"));
    EXPECT_EQ(bytesOf(file), "a file");
    EXPECT_EQ(count(), 1u);
}

TEST_F(Files, AFullDiskLeavesTheOldFile) {
    fill(file, "old");
    struct LimitedSize {
        rlimit old{};
        LimitedSize() {
            getrlimit(RLIMIT_FSIZE, &old);
            const rlimit none{16, old.rlim_max};
            signal(SIGXFSZ, SIG_IGN);
            setrlimit(RLIMIT_FSIZE, &none);
        }
        ~LimitedSize() {
            setrlimit(RLIMIT_FSIZE, &old);
            signal(SIGXFSZ, SIG_DFL);
        }
    };
    bool isReplaced = true;
    {
        const LimitedSize limited;
        isReplaced = replaceFile(file, std::string(100, 'x'));
    }
    EXPECT_FALSE(isReplaced);
    EXPECT_EQ(bytesOf(file), "old");
    EXPECT_EQ(count(), 1u);
}

TEST_F(Files, SetsTheOldFileAside) {
    fill(file, "old");
    EXPECT_TRUE(replaceFile(file, "new", folder.path() / "aside"));
    EXPECT_EQ(bytesOf(folder.path() / "aside"), "old");
    EXPECT_EQ(bytesOf(file), "new");
}

} // namespace clipwren
