#pragma once

#include <string>

namespace clipwren {

// The number with exactly so many decimals, rounded as printf rounds, always with a point: never in the
// user's locale, which a toolkit may have set for the whole process.
std::string decimalText(double number, int decimals);

} // namespace clipwren
