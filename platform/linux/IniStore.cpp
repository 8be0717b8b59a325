#include "platform/linux/IniStore.h"

#include "platform/linux/Files.h"
#include "platform/linux/IniText.h"

#include <cerrno>
#include <charconv>
#include <system_error>
#include <utility>

#include <unistd.h>

namespace clipwren {

namespace {

constexpr std::size_t longestFile = 1 << 20;

struct Name {
    std::string_view group;
    std::string_view key;
};

Name nameOf(std::string_view key) {
    const auto dot = key.find('.');
    if (dot == std::string_view::npos) return {{}, key};
    return {key.substr(0, dot), key.substr(dot + 1)};
}

bool isTaken(const std::filesystem::path& file) {
    std::error_code error;
    return std::filesystem::exists(std::filesystem::symlink_status(file, error));
}

// A name beside the file that nothing has yet. Empty when there are a hundred already.
std::filesystem::path freeNameForBad(const std::filesystem::path& file) {
    for (int number = 1; number <= 100; ++number) {
        auto name = file;
        name += number == 1 ? ".bad" : ".bad" + std::to_string(number);
        if (!isTaken(name)) return name;
    }
    return {};
}

} // namespace

IniStore::IniStore(std::filesystem::path file) : file(std::move(file)) {}

bool IniStore::contains(std::string_view key) const { return valueOf(key).has_value(); }

std::int64_t IniStore::integer(std::string_view key) const {
    return integerFromIni(valueOf(key).value_or(std::string()));
}

bool IniStore::setInteger(std::string_view key, std::int64_t value) {
    auto old = readText();
    std::filesystem::path setAside;
    if (!old && isTaken(file)) {
        std::error_code error;
        auto target = std::filesystem::canonical(file, error);
        if (!error) {
            setAside = freeNameForBad(target);
            if (setAside.empty()) return false;
        }
    }
    IniText text(old.value_or(std::string()));
    char digits[24];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), value).ptr;
    const auto name = nameOf(key);
    text.set(name.group, name.key, {digits, static_cast<std::size_t>(end - digits)});
    return text.text() == old || replaceFile(file, text.text(), setAside);
}

bool IniStore::removeAll() { return unlink(file.c_str()) == 0 || errno == ENOENT || errno == ENOTDIR; }

// None where there is no file and for one that cannot be settings.
std::optional<std::string> IniStore::readText() const {
    auto text = readSmallFile(file, longestFile);
    if (text && text->find('\0') != std::string::npos) return std::nullopt;
    return text;
}

std::optional<std::string> IniStore::valueOf(std::string_view key) const {
    const auto text = readText();
    if (!text) return std::nullopt;
    const IniText ini(*text);
    const auto name = nameOf(key);
    const auto value = ini.value(name.group, name.key);
    return value ? std::optional<std::string>(*value) : std::nullopt;
}

} // namespace clipwren
