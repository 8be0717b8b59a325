// Feeds the GIF writer with animations that a coverage-guided fuzzer thinks up.

#include "base/FatalError.h"
#include "tests/support/RandomAnimation.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string wrong = clipwren::checkRandomAnimation({data, size});
    if (!wrong.empty()) clipwren::fatalError(wrong);
    return 0;
}
