#pragma once

#include "base/MediaTime.h"
#include "capture/FrameImage.h"

namespace clipwren {

// One kept frame of a recording.
struct RecordedFrame {
    FrameImage image;           // at output size
    MediaTime presentationTime; // since the first kept frame, which has the zero time
};

} // namespace clipwren
