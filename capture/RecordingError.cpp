#include "capture/RecordingError.h"

#include "base/FatalError.h"

namespace clipwren {

std::string RecordingError::errorDescription() const {
    switch (reason) {
    case Case::streamStartFailed: return "Stream failed to start: " + underlying.localizedDescription;
    case Case::noDisplay: return "No capturable display found for the selected region.";
    }
    fatalError("unknown recording error");
}

std::string localizedDescription(const StartError& error) {
    if (const auto* own = std::get_if<RecordingError>(&error)) return own->errorDescription();
    return std::get<PlatformError>(error).localizedDescription;
}

} // namespace clipwren
