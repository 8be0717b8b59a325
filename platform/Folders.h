#pragma once

#include <filesystem>
#include <optional>

namespace clipwren {

// A moment in the user's own time zone. Month and day count from 1.
struct LocalTime {
    int year = 0;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

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
