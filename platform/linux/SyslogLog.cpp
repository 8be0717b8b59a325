#include "platform/linux/SyslogLog.h"

#include <algorithm>
#include <string>

#include <poll.h>
#include <syslog.h>
#include <unistd.h>

namespace clipwren {

SyslogLog::SyslogLog() { openlog("clipwren", LOG_PID, LOG_USER); }

void SyslogLog::write(std::string_view line) {
    std::string text(line);
    const auto isControl = [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte < 0x20 || byte == 0x7f;
    };
    std::replace_if(text.begin(), text.end(), isControl, ' ');
    syslog(LOG_NOTICE, "%s", text.c_str());

    // One write, so that lines of several threads do not mix.
    text.push_back('\n');
    pollfd ready{STDERR_FILENO, POLLOUT, 0};
    if (poll(&ready, 1, 100) == 1 && (ready.revents & POLLOUT)) [[maybe_unused]]
        const auto written = ::write(STDERR_FILENO, text.data(), text.size());
}

} // namespace clipwren
