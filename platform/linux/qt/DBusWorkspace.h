#pragma once

#include "platform/Workspace.h"

namespace clipwren {

// Shows folders through the file manager that answers to org.freedesktop.FileManager1 on the session bus;
// where none answers within ten seconds, through the program xdg-open.
class DBusWorkspace : public Workspace {
public:
    void openFolder(const std::filesystem::path& folder) override;
};

} // namespace clipwren
