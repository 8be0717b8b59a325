#pragma once

#include <cstdint>
#include <optional>

namespace clipwren {

// Settings are enumerations that are stored by raw value. Each specialises `allCases` with the list of its
// cases in the order in which the user is offered them.
template <typename Setting>
inline constexpr auto allCases = nullptr;

template <typename Setting>
constexpr std::int64_t rawValue(Setting setting) {
    return static_cast<std::int64_t>(setting);
}

// Nothing for a number that is no case's raw value.
template <typename Setting>
constexpr std::optional<Setting> caseForRawValue(std::int64_t raw) {
    for (const Setting setting : allCases<Setting>)
        if (rawValue(setting) == raw) return setting;
    return std::nullopt;
}

} // namespace clipwren
