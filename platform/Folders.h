#pragma once

#include "base/LocalTime.h"

#include <filesystem>
#include <optional>

namespace clipwren {

// Where the user's things are, and when it is there. Any thread.
class Folders {
public:
    virtual ~Folders() = default;

    // None where the system reports no pictures folder.
    virtual std::optional<std::filesystem::path> pictures() const = 0;
    virtual std::filesystem::path home() const = 0;
    virtual LocalTime now() const = 0;
};

} // namespace clipwren
