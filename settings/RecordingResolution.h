#pragma once

#include "settings/RawRepresentable.h"

#include <array>
#include <string>

namespace clipwren {

// The largest width of a recording in pixels: wider regions are scaled down to it, narrower ones keep their
// size.
enum class RecordingResolution : std::int64_t {
    width480 = 480,
    width600 = 600,
    width800 = 800,
    width1200 = 1200,
    width1600 = 1600
};

template <>
inline constexpr std::array allCases<RecordingResolution>{
    RecordingResolution::width480, RecordingResolution::width600, RecordingResolution::width800,
    RecordingResolution::width1200, RecordingResolution::width1600};

inline std::string label(RecordingResolution resolution) {
    return std::to_string(rawValue(resolution)) + " px wide";
}

} // namespace clipwren
