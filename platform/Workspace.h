#pragma once

#include <filesystem>

namespace clipwren {

// The desktop's file browser. Main thread only.
class Workspace {
public:
    virtual ~Workspace() = default;

    // Shows the folder; returns at once. A failure is not reported.
    virtual void openFolder(const std::filesystem::path& folder) = 0;
};

} // namespace clipwren
