#pragma once

#include "settings/MaxDuration.h"
#include "settings/RecordingFPS.h"
#include "settings/RecordingResolution.h"

#include <string_view>

namespace clipwren {

class Store;

// The three recording settings, read from the store at every call. An absent key and a stored number that no
// setting knows read as the default; what is stored is never corrected. Main thread only.
struct Preferences {
    Preferences() = delete;

    static constexpr std::string_view fpsKey = "recording.fps";
    static constexpr std::string_view resolutionKey = "recording.resolution";
    static constexpr std::string_view maxDurationKey = "recording.maxDuration";

    static RecordingFPS fps(const Store& store);
    static RecordingResolution resolution(const Store& store);
    // A stored value that is not a number reads as 0, and so as no limit.
    static MaxDuration maxDuration(const Store& store);
};

} // namespace clipwren
