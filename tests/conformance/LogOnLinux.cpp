#include "platform/linux/SyslogLog.h"
#include "tests/conformance/LogConformance.h"

#include <sstream>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace clipwren {

// Stands in the place of standard error. The system log of the machine is not looked at.
struct SyslogLogSubject {
    SyslogLog real;

    SyslogLogSubject() { testing::internal::CaptureStderr(); }
    ~SyslogLogSubject() { lines(); }
    Log& log() { return real; }
    std::vector<std::string> lines() {
        std::vector<std::string> lines;
        if (!std::exchange(isCapturing, false)) return lines;
        std::istringstream text(testing::internal::GetCapturedStderr());
        for (std::string line; std::getline(text, line);)
            lines.push_back(line);
        return lines;
    }

private:
    bool isCapturing = true;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Syslog, LogConformance, SyslogLogSubject);

TEST(SyslogLog, ALineStaysOneLine) {
    SyslogLogSubject subject;
    subject.log().write(std::string_view("a\nb\r\tc\x1b[31m\0d", 13));
    EXPECT_EQ(subject.lines(), std::vector<std::string>{"a b  c [31m d"});
}

TEST(SyslogLog, DoesNotWaitForAStandardErrorThatIsFull) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    fcntl(ends[1], F_SETFL, O_NONBLOCK);
    while (write(ends[1], "x", 1) == 1) {
    }
    fcntl(ends[1], F_SETFL, 0);
    const int before = dup(STDERR_FILENO);
    dup2(ends[1], STDERR_FILENO);
    SyslogLog().write("not waited for");
    dup2(before, STDERR_FILENO);
    for (const int end : {ends[0], ends[1], before})
        close(end);
}

} // namespace clipwren
