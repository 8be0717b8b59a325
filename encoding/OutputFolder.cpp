#include "encoding/OutputFolder.h"

#include <system_error>

namespace clipwren {

namespace {

constexpr const char* folderName = "Clipwren";
constexpr const char* legacyFolderName = "ClipWren";

} // namespace

std::filesystem::path outputFolderPath(const Folders& folders) {
    return folders.pictures().value_or(folders.home() / "Pictures") / folderName;
}

std::filesystem::path outputFolder(const Folders& folders) {
    std::filesystem::path target = outputFolderPath(folders);
    const std::filesystem::path legacy = target.parent_path() / legacyFolderName;
    std::error_code ignored;
    if (std::filesystem::exists(legacy, ignored) && !std::filesystem::exists(target, ignored))
        std::filesystem::rename(legacy, target, ignored);
    std::filesystem::create_directories(target, ignored);
    return target;
}

std::string recordingFileName(const LocalTime& time) {
    return "Recording_" + dateText(time, "yyyy-MM-dd_HH-mm-ss") + ".gif";
}

} // namespace clipwren
