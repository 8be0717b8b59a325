#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace clipwren {

// The text of an ini file: groups "[name]", lines "key=value", comments from ';' or '#'. Lines before the
// first group belong to the group "". Blanks around names and values do not count. Where a key stands twice,
// the last one counts. Anything else is not understood and left alone.
class IniText {
public:
    explicit IniText(std::string text) : content(std::move(text)) {}

    // Valid until the text changes.
    std::optional<std::string_view> value(std::string_view group, std::string_view key) const;

    // Changes that value, or adds it to its group, which is added when there is none. Every other byte stays.
    void set(std::string_view group, std::string_view key, std::string_view value);

    const std::string& text() const { return content; }

private:
    std::string content;
};

// A value read as an integer: 0 when it is not one, the nearest that fits when it is too long.
std::int64_t integerFromIni(std::string_view value);

} // namespace clipwren
