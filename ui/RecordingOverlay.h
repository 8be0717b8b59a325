#pragma once

#include "base/Geometry.h"
#include "platform/Platform.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace clipwren {

class OverlayWindow;

// Dims everything outside the recorded region on every screen while a recording runs. Used for one recording.
// Main thread only.
class RecordingOverlay {
public:
    // The region in global points. Nothing is shown yet.
    RecordingOverlay(const Platform& platform, const Rect& captureRegion);
    ~RecordingOverlay();

    // Puts a window on every screen that is attached now.
    void show();

    // The shown windows' numbers in the order of their screens.
    std::vector<std::int64_t> windowNumbers() const;

    // Takes every window down; without any it does nothing.
    void hide();

private:
    const Platform& platform;
    std::vector<std::unique_ptr<OverlayWindow>> windows;
    const Rect captureRegion;
};

} // namespace clipwren
