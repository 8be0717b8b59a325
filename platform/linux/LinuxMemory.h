#pragma once

#include "platform/Memory.h"

#include <filesystem>

namespace clipwren {

// Linux: the machine's free memory, the limits of the control groups that the process is in, of both
// versions, and the process's own limits of address space and data.
class LinuxMemory final : public Memory {
public:
    // `root` is where proc and sys lie.
    explicit LinuxMemory(std::filesystem::path root = "/");

    std::optional<std::int64_t> available() const override;

private:
    const std::filesystem::path root;
};

} // namespace clipwren
