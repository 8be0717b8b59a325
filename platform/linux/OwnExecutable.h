#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace clipwren {

// The file that this process was started from; after an update the file that has taken its place. Empty where
// the system does not tell.
std::filesystem::path ownExecutable();

// The text as one word of a shell command, whatever is in it.
std::string shellQuoted(std::string_view text);

} // namespace clipwren
