#include "platform/linux/OwnExecutable.h"

#include <system_error>

namespace clipwren {

std::filesystem::path ownExecutable() {
    // What the kernel appends to the name once the file was removed or replaced.
    constexpr std::string_view replacedMark = " (deleted)";
    std::error_code error;
    auto path = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return {};
    std::string text = path.string();
    if (text.ends_with(replacedMark) && !std::filesystem::exists(path, error)) {
        text.resize(text.size() - replacedMark.size());
        return text;
    }
    return path;
}

std::string shellQuoted(std::string_view text) {
    std::string quoted = "'";
    for (const char character : text) {
        if (character == '\'')
            quoted += "'\\''";
        else
            quoted += character;
    }
    return quoted + "'";
}

} // namespace clipwren
