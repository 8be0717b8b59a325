#pragma once

#include "base/FatalError.h"

#include <string_view>

namespace clipwren {

// What a fuzzer asks of the code; whatever runs it then keeps the input.
inline void demand(bool holds, std::string_view what) {
    if (!holds) fatalError(what);
}

} // namespace clipwren
