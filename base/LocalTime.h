#pragma once

#include <string>
#include <string_view>

namespace clipwren {

// A moment in the user's own time zone. Month and day count from 1.
struct LocalTime {
    int year = 0;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
    friend bool operator==(const LocalTime&, const LocalTime&) = default;
};

// The format with each of yyyy, MM, dd, HH, mm and ss replaced by that part of the time, with leading zeros.
// Everything else stays as it is; no locale has a say.
std::string dateText(const LocalTime& time, std::string_view format);

} // namespace clipwren
