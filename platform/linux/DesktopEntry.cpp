#include "platform/linux/DesktopEntry.h"

#include <algorithm>

namespace clipwren {

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// Undoes the escapes that every value of the file may have.
std::string unescaped(std::string_view value) {
    std::string text;
    for (std::size_t at = 0; at < value.size(); ++at) {
        if (value[at] != '\\' || at + 1 == value.size()) {
            text += value[at];
            continue;
        }
        switch (value[++at]) {
        case 's': text += ' '; break;
        case 'n': text += '\n'; break;
        case 't': text += '\t'; break;
        case 'r': text += '\r'; break;
        default: text += value[at]; break;
        }
    }
    return text;
}

// The first argument of a command line, without its quotes.
std::string takeArgument(std::string_view& text) {
    std::string argument;
    bool isQuoted = false;
    std::size_t at = 0;
    for (; at < text.size() && (isQuoted || text[at] != ' '); ++at) {
        const bool isEscape = text[at] == '\\' || text.substr(at).starts_with("%%");
        if (text[at] == '"')
            isQuoted = !isQuoted;
        else if (isEscape && at + 1 < text.size())
            argument += text[++at];
        else
            argument += text[at];
    }
    text.remove_prefix(std::min(at + 1, text.size()));
    return argument;
}

} // namespace

std::string execValue(std::string_view program) {
    // Three layers lie over each other: the argument's quotes, the field codes, the file's own escapes.
    std::string value = "\"";
    // GLib looks for the program before it undoes the doubled per cent sign; env it finds.
    if (program.find('%') != std::string_view::npos) value.insert(0, "env ");
    for (const char character : program) {
        switch (character) {
        case '"':
        case '`':
        case '$':
            value += "\\\\";
            value += character;
            break;
        case '\\': value += "\\\\\\\\"; break;
        case '%': value += "%%"; break;
        case '\n': value += "\\n"; break;
        case '\t': value += "\\t"; break;
        case '\r': value += "\\r"; break;
        default: value += character; break;
        }
    }
    return value + "\"";
}

std::string programInExecValue(std::string_view value) {
    const std::string text = unescaped(trimmed(value));
    std::string_view rest = text;
    std::string program = takeArgument(rest);
    return program == "env" ? takeArgument(rest) : program;
}

std::optional<std::string_view> desktopEntryValue(std::string_view text, std::string_view key) {
    std::optional<std::string_view> found;
    bool isInGroup = false;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        const auto line = trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.starts_with('[')) isInGroup = line == "[Desktop Entry]";
        const auto equals = line.find('=');
        if (isInGroup && equals != std::string_view::npos && trimmed(line.substr(0, equals)) == key)
            found = trimmed(line.substr(equals + 1));
    }
    return found;
}

} // namespace clipwren
