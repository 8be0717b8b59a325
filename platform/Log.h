#pragma once

#include <string_view>

namespace clipwren {

// The system log. Any thread.
class Log {
public:
    virtual ~Log() = default;

    // One line of UTF-8 without its end.
    virtual void write(std::string_view line) = 0;
};

} // namespace clipwren
