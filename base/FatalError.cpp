#include "base/FatalError.h"

#include <cstdio>
#include <cstdlib>

namespace clipwren {

void fatalError(std::string_view text) {
    std::fprintf(stderr, "Clipwren: fatal error: %.*s\n", static_cast<int>(text.size()), text.data());
    std::fflush(stderr);
    std::abort();
}

} // namespace clipwren
