#include "platform/linux/PosixFiles.h"
#include "tests/conformance/FilesConformance.h"

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace clipwren {

struct PosixFilesSubject {
    PosixFiles real;
    Files& files() { return real; }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, FilesConformance, PosixFilesSubject);

namespace {

TEST(PosixFiles, AFullDiskIsTold) {
    // A limit on the length of files answers like a disk that is full from there on.
    const TemporaryFolder folder;
    const pid_t child = fork();
    if (child == 0) {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{1000, 1000};
        setrlimit(RLIMIT_FSIZE, &limit);
        const auto file = PosixFiles().create(folder.path() / "new");
        const std::vector<std::uint8_t> bytes(600);
        _exit(file && file->write(bytes) && !file->write(bytes) ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(std::filesystem::file_size(folder.path() / "new"), 1000u);
}

TEST(PosixFiles, AKilledProcessHoldsNothing) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "new";
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        const auto file = PosixFiles().create(path);
        const char told = file ? 1 : 0;
        if (write(ready[1], &told, 1) != 1) _exit(1);
        pause();
    }
    char told = 0;
    ASSERT_EQ(read(ready[0], &told, 1), 1);
    EXPECT_EQ(told, 1);
    EXPECT_FALSE(PosixFiles().removeAbandoned(path));
    EXPECT_TRUE(std::filesystem::exists(path));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_TRUE(PosixFiles().removeAbandoned(path));
    EXPECT_FALSE(std::filesystem::exists(path));
    close(ready[0]);
    close(ready[1]);
}

TEST(PosixFiles, APipeIsNotWaitedFor) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo((folder.path() / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(PosixFiles().removeAbandoned(folder.path() / "pipe"));
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "pipe"));
}

TEST(PosixFiles, TheProcesssMaskSaysWhoMayRead) {
    const TemporaryFolder folder;
    const mode_t before = umask(0027);
    const auto file = PosixFiles().create(folder.path() / "new");
    umask(before);
    struct stat status{};
    ASSERT_EQ(stat((folder.path() / "new").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
}

} // namespace

} // namespace clipwren
