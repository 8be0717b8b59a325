#include "platform/linux/IniText.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace clipwren {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\v\f";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return text.substr(text.size());
    return text.substr(first, text.find_last_not_of(blanks) + 1 - first);
}

struct Line {
    std::size_t next = 0;   // where the following line begins
    std::string_view group; // that the line belongs to, or opens
    bool isBlank = false;
    bool isSetting = false;
    std::string_view key;
    std::string_view value;
};

template <typename Visit>
void forEachLine(std::string_view text, Visit visit) {
    Line line;
    std::size_t begin = text.starts_with(byteOrderMark) ? byteOrderMark.size() : 0;
    for (; begin < text.size(); begin = line.next) {
        const auto end = std::min(text.find('\n', begin), text.size());
        const auto words = trimmed(text.substr(begin, end - begin));
        const auto equals = words.find('=');
        line.next = std::min(end + 1, text.size());
        line.isBlank = words.empty();
        line.isSetting = false;
        if (words.starts_with('[') && words.ends_with(']')) {
            line.group = trimmed(words.substr(1, words.size() - 2));
        } else if (!words.starts_with(';') && !words.starts_with('#') && equals != std::string_view::npos) {
            line.isSetting = true;
            line.key = trimmed(words.substr(0, equals));
            line.value = trimmed(words.substr(equals + 1));
        }
        visit(line);
    }
}

} // namespace

std::optional<std::string_view> IniText::value(std::string_view group, std::string_view key) const {
    std::optional<std::string_view> found;
    forEachLine(content, [&](const Line& line) {
        if (line.isSetting && line.group == group && line.key == key) found = line.value;
    });
    return found;
}

void IniText::set(std::string_view group, std::string_view key, std::string_view value) {
    if (const auto old = this->value(group, key)) {
        content.replace(static_cast<std::size_t>(old->data() - content.data()), old->size(), value);
        return;
    }
    // Behind the last line of the group, before the blank lines that part it from the next one.
    std::optional<std::size_t> place;
    if (group.empty()) place = content.starts_with(byteOrderMark) ? byteOrderMark.size() : 0;
    forEachLine(content, [&](const Line& line) {
        if (line.group == group && !line.isBlank) place = line.next;
    });

    const auto firstEnd = content.find('\n');
    const bool hasReturns = firstEnd != std::string::npos && firstEnd > 0 && content[firstEnd - 1] == '\r';
    const std::string_view lineEnd = hasReturns ? "\r\n" : "\n";
    std::string added;
    const auto at = place.value_or(content.size());
    if (at == content.size() && !content.empty() && !content.ends_with('\n') && content != byteOrderMark)
        added += lineEnd;
    if (!place) {
        if (!content.empty() && content != byteOrderMark) added += lineEnd;
        added.append("[").append(group).append("]").append(lineEnd);
    }
    added.append(key).append("=").append(value).append(lineEnd);
    content.insert(at, added);
}

std::int64_t integerFromIni(std::string_view value) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (end != value.data() + value.size()) return 0;
    if (error == std::errc::result_out_of_range)
        return value.starts_with('-') ? std::numeric_limits<std::int64_t>::min()
                                      : std::numeric_limits<std::int64_t>::max();
    return error == std::errc() ? number : 0;
}

} // namespace clipwren
