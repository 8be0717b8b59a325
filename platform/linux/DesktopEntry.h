#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace clipwren {

// Text of .desktop files, by the rules of the desktop entry specification.

// The value, as it stands in the file, of an Exec key that starts the program without arguments. Whatever is
// in the path: blanks, quotes, dollars, backslashes, per cent signs, line ends.
std::string execValue(std::string_view program);

// The program that an Exec value, as it stands in the file, starts. Empty for one that starts none.
std::string programInExecValue(std::string_view value);

// The value, as it stands in the file, of a key of the group "Desktop Entry". The last one counts.
std::optional<std::string_view> desktopEntryValue(std::string_view text, std::string_view key);

} // namespace clipwren
