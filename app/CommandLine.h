#pragma once

#include <span>
#include <string>
#include <string_view>

namespace clipwren {

// What the user wants of a start of the program.
struct CommandLine {
    enum class Request {
        run,     // be the running Clipwren, or show its settings when there is one
        trigger, // what the hot key does, in the running Clipwren
        quit,    // end the running Clipwren
        print,   // write `text` to standard output, no more
        refuse,  // write `text` to standard error and end with status 2
    };

    Request request = Request::run;
    std::string text; // with the end of its last line; empty where nothing is written
};

// `arguments` without the program's own name. At most one option is taken, and nothing else.
CommandLine parseCommandLine(std::span<const char* const> arguments, std::string_view version);

} // namespace clipwren
