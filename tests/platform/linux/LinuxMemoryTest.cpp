#include "platform/linux/LinuxMemory.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace clipwren {
namespace {

// A computer of files.
struct Computer {
    TemporaryFolder folder;

    void put(const std::string& file, const std::string& text) {
        std::filesystem::create_directories((folder.path() / file).parent_path());
        std::ofstream(folder.path() / file) << text;
    }
    std::optional<std::int64_t> available() const { return LinuxMemory(folder.path()).available(); }
};

TEST(LinuxMemory, KnowsTheMachineItRunsOn) {
    const auto available = LinuxMemory().available();
    ASSERT_TRUE(available);
    EXPECT_GT(*available, 1 << 20);
    EXPECT_LT(*available, std::int64_t{1} << 50);
}

TEST(LinuxMemory, KnowsNothingWhereNothingIsTold) {
    Computer computer;
    EXPECT_FALSE(computer.available());
    computer.put("proc/meminfo", "MemTotal: lots\nMemAvailable:\n");
    EXPECT_FALSE(computer.available());
}

TEST(LinuxMemory, CountsWhatTheMachineHasLeft) {
    Computer computer;
    computer.put("proc/meminfo", "MemTotal:  4000000 kB\nMemFree:  1 kB\nMemAvailable:  300000 kB\n");
    EXPECT_EQ(computer.available(), 300'000 * 1024);
}

TEST(LinuxMemory, CountsTheLimitsOfEveryGroupAround) {
    Computer computer;
    computer.put("proc/meminfo", "MemAvailable: 3000000 kB\n");
    computer.put("proc/self/cgroup", "0::/user.slice/app.scope\n");
    computer.put("sys/fs/cgroup/user.slice/app.scope/memory.max", "max\n");
    computer.put("sys/fs/cgroup/user.slice/app.scope/memory.current", "500000\n");
    EXPECT_EQ(computer.available(), 3'000'000'000 / 1000 * 1024);

    computer.put("sys/fs/cgroup/user.slice/memory.max", "1000000\n");
    computer.put("sys/fs/cgroup/user.slice/memory.current", "600000\n");
    EXPECT_EQ(computer.available(), 400'000);
    computer.put("sys/fs/cgroup/user.slice/memory.stat", "anon 5\ninactive_file 50000\n");
    EXPECT_EQ(computer.available(), 450'000);
    computer.put("sys/fs/cgroup/user.slice/app.scope/memory.high", "510000\n");
    EXPECT_EQ(computer.available(), 10'000);
    // More in use than allowed is less than nothing.
    computer.put("sys/fs/cgroup/user.slice/app.scope/memory.max", "400000\n");
    EXPECT_EQ(computer.available(), -100'000);
}

TEST(LinuxMemory, CountsTheLimitThatAContainerSees) {
    Computer computer;
    computer.put("proc/self/cgroup", "0::/docker/0123\n");
    computer.put("sys/fs/cgroup/memory.max", "900\n");
    computer.put("sys/fs/cgroup/memory.current", "200\n");
    EXPECT_EQ(computer.available(), 700);
}

TEST(LinuxMemory, CountsTheLimitsOfTheFirstVersionToo) {
    Computer computer;
    computer.put("proc/self/cgroup", "5:devices:/x\n4:cpu,memory:/a/b\n1:memorylike:/c\n0::/\n");
    computer.put("sys/fs/cgroup/memory/a/b/memory.limit_in_bytes", "9223372036854771712\n");
    computer.put("sys/fs/cgroup/memory/a/b/memory.usage_in_bytes", "100\n");
    computer.put("sys/fs/cgroup/memory/a/memory.limit_in_bytes", "5000\n");
    computer.put("sys/fs/cgroup/memory/a/memory.usage_in_bytes", "1000\n");
    EXPECT_EQ(computer.available(), 4000);
}

TEST(LinuxMemory, CountsTheLimitsOfTheProcess) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "The sanitizer has mapped more than any limit and ends where it can map no more.";
#endif
    for (const auto kind : {RLIMIT_AS, RLIMIT_DATA}) {
        // In a process of its own, since nobody can raise a limit again.
        const pid_t child = fork();
        if (child == 0) {
            const rlimit limit{std::size_t{8} << 30, std::size_t{8} << 30};
            setrlimit(kind, &limit);
            Computer computer;
            computer.put("proc/self/statm", "262144 9 9 9 0 131072 0\n"); // pages of four kilobytes
            const auto available = computer.available();
            const std::int64_t used = std::int64_t{kind == RLIMIT_AS ? 1024 : 512} << 20;
            // Less what threads may take.
            const std::int64_t most = (std::int64_t{8} << 30) - used;
            _exit(available && *available < most && *available > most - (std::int64_t{6} << 30) ? 0 : 1);
        }
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
}

} // namespace
} // namespace clipwren
