#pragma once

#include <optional>

namespace clipwren {

// A program that only puts a file on the clipboard and ends, to be started as a process of its own: this
// executable with the arguments `--copy-and-end FILE`. None when the arguments do not ask for it.
std::optional<int> runCopyingProgram(int argc, char** argv);

} // namespace clipwren
