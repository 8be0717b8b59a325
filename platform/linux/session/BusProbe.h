#pragma once

#include <string>
#include <string_view>

namespace clipwren {

// Where the system bus is, as the environment says or as it usually is.
std::string systemBusAddress();

// Whether a message bus answers at one of the addresses within that time. The bus library itself waits for
// ever for one that takes a connection and says nothing, and meanwhile hears nothing from other buses either.
// Any thread. True as well for addresses of another kind than local sockets, at which nobody is asked.
bool busAnswers(std::string_view addresses, int milliseconds);

} // namespace clipwren
