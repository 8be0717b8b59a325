#pragma once

#include "platform/Log.h"

namespace clipwren {

// The system log, with the identifier "clipwren", and standard error. A line stays one line whatever it
// holds: control characters become spaces. A standard error that takes nothing more is given up on, never
// waited for.
class SyslogLog : public Log {
public:
    SyslogLog();

    void write(std::string_view line) override;
};

} // namespace clipwren
