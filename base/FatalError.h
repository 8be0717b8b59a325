#pragma once

#include <string_view>

namespace clipwren {

// Ends the program at once for an error of the program itself, after writing `text` to standard error.
// Never for anything that a user, a file or a display server can cause.
[[noreturn]] void fatalError(std::string_view text);

} // namespace clipwren
