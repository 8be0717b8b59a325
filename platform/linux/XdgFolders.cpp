#include "platform/linux/XdgFolders.h"

#include "platform/linux/Files.h"
#include "platform/linux/LocalClock.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace clipwren {

namespace {

constexpr std::size_t longestUserDirs = 1 << 20;

std::optional<std::filesystem::path> absolutePathFrom(const char* variable) {
    const char* value = std::getenv(variable);
    if (!value || value[0] != '/') return std::nullopt;
    return std::filesystem::path(value);
}

std::string_view withoutLeadingBlanks(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

bool takePrefix(std::string_view& text, std::string_view prefix) {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

// Without a slash at the end, so that equal folders are equal paths.
std::filesystem::path tidied(const std::filesystem::path& path) {
    const auto normal = path.lexically_normal();
    return normal.has_filename() || normal == normal.root_path() ? normal : normal.parent_path();
}

// One line's folder: XDG_PICTURES_DIR="…", where a backslash takes the next character as it stands.
std::optional<std::filesystem::path> picturesInLine(std::string_view line,
                                                    const std::filesystem::path& home) {
    line = withoutLeadingBlanks(line);
    if (!takePrefix(line, "XDG_PICTURES_DIR")) return std::nullopt;
    line = withoutLeadingBlanks(line);
    if (!takePrefix(line, "=")) return std::nullopt;
    line = withoutLeadingBlanks(line);
    if (!takePrefix(line, "\"")) return std::nullopt;
    const bool isBelowHome = takePrefix(line, "$HOME");

    std::string value;
    for (std::size_t at = 0; at < line.size() && line[at] != '"'; ++at) {
        if (line[at] == '\\' && at + 1 < line.size()) ++at;
        value.push_back(line[at]);
    }
    if (isBelowHome ? !value.empty() && value[0] != '/' : value.empty() || value[0] != '/')
        return std::nullopt;
    return tidied(isBelowHome ? home.string() + value : value);
}

} // namespace

std::optional<std::filesystem::path> picturesInUserDirs(std::string_view text,
                                                        const std::filesystem::path& home) {
    std::optional<std::filesystem::path> found;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        if (auto folder = picturesInLine(text.substr(0, end), home)) found = std::move(folder);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    if (found == tidied(home)) return std::nullopt;
    return found;
}

std::optional<std::filesystem::path> XdgFolders::pictures() const {
    const auto text = readSmallFile(configuration() / "user-dirs.dirs", longestUserDirs);
    return text ? picturesInUserDirs(*text, home()) : std::nullopt;
}

std::filesystem::path XdgFolders::home() const {
    if (auto folder = absolutePathFrom("HOME")) return *folder;
    std::vector<char> buffer(16 * 1024);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found && found->pw_dir)
        return found->pw_dir;
    return "/";
}

std::filesystem::path XdgFolders::configuration() const {
    return absolutePathFrom("XDG_CONFIG_HOME").value_or(home() / ".config");
}

LocalTime XdgFolders::now() const { return localTime(std::time(nullptr)); }

} // namespace clipwren
