#include "app/CommandLine.h"

namespace clipwren {

namespace {

constexpr std::string_view help =
    "Usage: clipwren [OPTION]\n"
    "Records a region of the screen into an animated GIF. Without an option it settles in the panel;\n"
    "if it runs already, its settings are shown.\n"
    "\n"
    "  --trigger  begin or cancel a selection, or stop the recording, as the hot key does\n"
    "  --quit     end the running Clipwren\n"
    "  --version  print the version\n"
    "  --help     print this text\n";

CommandLine refusal(const std::string& reason) {
    return {CommandLine::Request::refuse,
            "clipwren: " + reason + "\nTry 'clipwren --help' for more information.\n"};
}

} // namespace

CommandLine parseCommandLine(std::span<const char* const> arguments, std::string_view version) {
    if (arguments.empty()) return {};
    const std::string first = arguments.front();
    CommandLine result;
    if (first == "--trigger")
        result = {CommandLine::Request::trigger, {}};
    else if (first == "--quit")
        result = {CommandLine::Request::quit, {}};
    else if (first == "--version")
        result = {CommandLine::Request::print, "clipwren " + std::string(version) + "\n"};
    else if (first == "--help")
        result = {CommandLine::Request::print, std::string(help)};
    else
        return refusal((first.starts_with('-') ? "unknown option '" : "unexpected argument '") + first + "'");
    if (arguments.size() > 1) return refusal("unexpected argument '" + std::string(arguments[1]) + "'");
    return result;
}

} // namespace clipwren
