#pragma once

#include "settings/RawRepresentable.h"

#include <array>
#include <string>

namespace clipwren {

// Frames a second of a recording.
enum class RecordingFPS : std::int64_t { fps10 = 10, fps15 = 15, fps20 = 20, fps24 = 24, fps30 = 30 };

template <>
inline constexpr std::array allCases<RecordingFPS>{
    RecordingFPS::fps10, RecordingFPS::fps15, RecordingFPS::fps20, RecordingFPS::fps24, RecordingFPS::fps30};

inline std::string label(RecordingFPS fps) { return std::to_string(rawValue(fps)) + " fps"; }

} // namespace clipwren
