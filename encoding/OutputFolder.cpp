#include "encoding/OutputFolder.h"

#include <array>
#include <charconv>
#include <system_error>

namespace clipwren {

namespace {

constexpr const char* folderName = "Clipwren";
constexpr const char* legacyFolderName = "ClipWren";

// With leading zeros up to `digits`.
void appendNumber(std::string& text, int number, std::size_t digits) {
    std::array<char, 16> buffer;
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    const auto length = static_cast<std::size_t>(end - buffer.data());
    if (length < digits) text.append(digits - length, '0');
    text.append(buffer.data(), length);
}

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
    std::string name = "Recording_";
    appendNumber(name, time.year, 4);
    name += '-';
    appendNumber(name, time.month, 2);
    name += '-';
    appendNumber(name, time.day, 2);
    name += '_';
    appendNumber(name, time.hour, 2);
    name += '-';
    appendNumber(name, time.minute, 2);
    name += '-';
    appendNumber(name, time.second, 2);
    return name + ".gif";
}

} // namespace clipwren
