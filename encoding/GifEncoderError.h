#pragma once

#include <string_view>

namespace clipwren {

enum class GifEncoderError { noFrames, destinationFailure, finalizeFailure };

// A sentence for the user.
std::string_view errorDescription(GifEncoderError error);

} // namespace clipwren
