#pragma once

#include <string>

namespace clipwren {

// An error of the platform itself, with a sentence that a person can read.
struct PlatformError {
    std::string localizedDescription;
    friend bool operator==(const PlatformError&, const PlatformError&) = default;
};

} // namespace clipwren
