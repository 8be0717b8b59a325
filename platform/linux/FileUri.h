#pragma once

#include <filesystem>
#include <string>

namespace clipwren {

// The file: address of a file, absolute and with every byte percent-encoded that is not an unreserved
// character or a slash.
std::string fileUri(const std::filesystem::path& file);

} // namespace clipwren
