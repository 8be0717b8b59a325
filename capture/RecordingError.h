#pragma once

#include "platform/ScreenCapture.h"

#include <string>
#include <variant>

namespace clipwren {

// Why a recording could not be started.
struct RecordingError {
    enum class Case { streamStartFailed, noDisplay };

    static RecordingError streamStartFailed(PlatformError underlying) {
        return {Case::streamStartFailed, std::move(underlying)};
    }
    static RecordingError noDisplay() { return {Case::noDisplay, {}}; }

    // A sentence for the user.
    std::string errorDescription() const;

    Case reason = Case::noDisplay;
    PlatformError underlying; // of streamStartFailed
    friend bool operator==(const RecordingError&, const RecordingError&) = default;
};

// What ends a start: an error of our own, or the platform's own handed through as it is.
using StartError = std::variant<RecordingError, PlatformError>;

std::string localizedDescription(const StartError& error);

} // namespace clipwren
