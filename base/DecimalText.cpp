#include "base/DecimalText.h"

#include <array>
#include <charconv>

namespace clipwren {

std::string decimalText(double number, int decimals) {
    std::array<char, 400> digits{}; // the longest double has 309 digits before the point
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number,
                                   std::chars_format::fixed, decimals)
                         .ptr;
    return {digits.data(), end};
}

} // namespace clipwren
