#pragma once

#include "base/BlockPool.h"

namespace clipwren {

// Chunks straight from the system, to which they go back at once. The C++ library would keep what one
// recording has used until the end of the program.
//
// Where everything moves, most of the cost of new memory is the system handing it out in pages of four
// kilobytes: measured, large pages make it a third to a quarter.
const BlockPool::Source& largePages();

} // namespace clipwren
