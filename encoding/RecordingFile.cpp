#include "encoding/RecordingFile.h"

#include "platform/Files.h"

#include <algorithm>
#include <random>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace clipwren {

namespace {

constexpr std::size_t bufferSize = 256 * 1024;

// Hidden, and with a random number of so many digits between: nobody calls a file of his own so.
constexpr std::string_view prefix = ".clipwren-recording-";
constexpr std::string_view suffix = ".part";
constexpr std::string_view digits = "0123456789abcdef";
constexpr std::size_t numberOfDigits = 16;

std::string hiddenName() {
    std::random_device random;
    std::string name(prefix);
    for (std::size_t i = 0; i < numberOfDigits; ++i)
        name += digits[random() % digits.size()];
    return name += suffix;
}

bool isHiddenName(std::string_view name) {
    return name.size() == prefix.size() + numberOfDigits + suffix.size() && name.starts_with(prefix) &&
           name.ends_with(suffix) &&
           name.substr(prefix.size(), numberOfDigits).find_first_not_of(digits) == std::string_view::npos;
}

} // namespace

std::unique_ptr<RecordingFile> RecordingFile::create(Files& files, const std::filesystem::path& path) {
    // No file could take its place, which is better known before the work than after it.
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) return nullptr;
    auto file = files.create(path.parent_path() / hiddenName());
    if (!file) return nullptr;
    return std::unique_ptr<RecordingFile>(new RecordingFile(std::move(file), path));
}

RecordingFile::RecordingFile(std::unique_ptr<NewFile> file, std::filesystem::path path)
    : file(std::move(file)),
      path(std::move(path)) {
    buffer.reserve(bufferSize);
}

RecordingFile::~RecordingFile() {
    if (file) file->remove();
}

void RecordingFile::write(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty() && intact) {
        const auto part = bytes.first(std::min(bytes.size(), bufferSize - buffer.size()));
        buffer.insert(buffer.end(), part.begin(), part.end());
        bytes = bytes.subspan(part.size());
        if (buffer.size() == bufferSize) writeOut();
    }
}

void RecordingFile::writeOut() {
    intact = intact && file->write(buffer);
    buffer.clear();
}

bool RecordingFile::finish() {
    if (!buffer.empty()) writeOut();
    // On the disk before it has its name: otherwise a power failure may leave the name without the bytes.
    intact = intact && file->sync();
    if (file->rename(path))
        file = nullptr;
    else
        intact = false;
    return intact;
}

void removeAbandonedRecordings(Files& files, const std::filesystem::path& folder) {
    std::error_code ignored;
    std::vector<std::filesystem::path> abandoned;
    std::filesystem::directory_iterator entry(folder, ignored);
    for (; !ignored && entry != std::filesystem::directory_iterator(); entry.increment(ignored))
        if (isHiddenName(entry->path().filename().string())) abandoned.push_back(entry->path());
    for (const auto& file : abandoned)
        files.removeAbandoned(file);
}

} // namespace clipwren
