#pragma once

#include "platform/Files.h"

namespace clipwren {

// Files as POSIX systems have them. An advisory lock tells that a process holds a file; it ends with the
// process, whatever ends that. Where the file system has no locks nothing counts as abandoned.
class PosixFiles : public Files {
public:
    std::unique_ptr<NewFile> create(const std::filesystem::path& file) override;
    bool removeAbandoned(const std::filesystem::path& file) override;
};

} // namespace clipwren
