#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace clipwren {

// The bytes of a regular file. None for a file that is absent, unreadable, longer than `limit` or something
// else than a file; a pipe or device is never waited for.
std::optional<std::string> readSmallFile(const std::filesystem::path& file, std::size_t limit);

// Replaces the file, or makes it, in one step: whoever reads it, even after a crash, sees the old bytes or
// the new ones. A symbolic link is followed and stays; permissions of an existing file are kept, a new one is
// the user's own, and so is its folder when that has to be made. False when it could not be done; the old
// file is then untouched. With `setAside` the old file is first renamed to that name.
bool replaceFile(const std::filesystem::path& file, std::string_view bytes,
                 const std::filesystem::path& setAside = {});

} // namespace clipwren
