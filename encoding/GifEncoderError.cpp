#include "encoding/GifEncoderError.h"

#include "base/FatalError.h"

namespace clipwren {

std::string_view errorDescription(GifEncoderError error) {
    switch (error) {
    case GifEncoderError::noFrames: return "No frames were captured.";
    case GifEncoderError::destinationFailure: return "Could not create GIF destination.";
    case GifEncoderError::finalizeFailure: return "Could not finalize GIF.";
    }
    fatalError("unknown GIF encoder error");
}

} // namespace clipwren
