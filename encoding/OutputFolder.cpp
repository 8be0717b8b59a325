#include "encoding/OutputFolder.h"

#include <system_error>

namespace clipwren {

namespace {

constexpr const char* folderName = "Clipwren";
constexpr const char* legacyFolderName = "ClipWren";

} // namespace

std::filesystem::path outputFolder(const Folders& folders) {
    const std::filesystem::path base = folders.pictures().value_or(folders.home() / "Pictures");
    const std::filesystem::path target = base / folderName;
    const std::filesystem::path legacy = base / legacyFolderName;
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
