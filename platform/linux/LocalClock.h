#pragma once

#include "base/LocalTime.h"

#include <ctime>

namespace clipwren {

// The moment in the user's time zone as it is set now: the user may have travelled since the program
// started. Any thread.
LocalTime localTime(std::time_t moment);

} // namespace clipwren
