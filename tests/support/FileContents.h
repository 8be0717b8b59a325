#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace clipwren {

// All bytes of a file; empty for one that cannot be read.
inline std::string fileContents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace clipwren
