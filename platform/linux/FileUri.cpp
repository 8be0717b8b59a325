#include "platform/linux/FileUri.h"

#include <string_view>
#include <system_error>

namespace clipwren {

std::string fileUri(const std::filesystem::path& file) {
    constexpr std::string_view plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::error_code error;
    const auto whole = file.is_absolute() ? file : std::filesystem::absolute(file, error);
    std::string uri = "file://";
    for (const char character : whole.string()) {
        if (plain.find(character) != std::string_view::npos) {
            uri.push_back(character);
            continue;
        }
        const auto byte = static_cast<unsigned char>(character);
        uri.push_back('%');
        uri.push_back(digits[byte >> 4]);
        uri.push_back(digits[byte & 15]);
    }
    return uri;
}

} // namespace clipwren
