#pragma once

#include "base/Image.h"
#include "base/MediaTime.h"

namespace clipwren {

// One kept frame of a recording.
struct RecordedFrame {
    Image image;                // at output size
    MediaTime presentationTime; // since the first kept frame, which has the zero time
};

} // namespace clipwren
