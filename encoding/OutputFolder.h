#pragma once

#include "platform/Folders.h"

#include <filesystem>
#include <string>

namespace clipwren {

// The folder of the recordings inside the user's pictures folder, made if need be; one of its earlier
// spelling is renamed. Failures of the file system are ignored: the path is returned all the same.
std::filesystem::path outputFolder(const Folders& folders);

// Where that folder is, or would be.
std::filesystem::path outputFolderPath(const Folders& folders);

// The name of a recording that is encoded at that time.
std::string recordingFileName(const LocalTime& time);

} // namespace clipwren
