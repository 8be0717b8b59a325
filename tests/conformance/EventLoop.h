#pragma once

#include <functional>

namespace clipwren {

// Runs Qt's event loop on this thread for that time, deferred deletions included. May be nested.
void runEventLoop(double seconds);

// Runs it until the condition holds, asking every few milliseconds; for ten
// seconds at most. False when the condition never held.
bool runEventLoopUntil(const std::function<bool()>& condition);

} // namespace clipwren
