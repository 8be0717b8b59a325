#pragma once

#include "capture/RecordedFrame.h"
#include "encoding/AnimationWriter.h"

#include <span>

namespace clipwren {

class Canvases;

// The frames of a recording with the delays that their times ask for, each with the badge; a frame that
// cannot be stamped goes without it, as all do when there are no canvases. Frames and canvases outlive the
// animation.
Animation recordedAnimation(std::span<const RecordedFrame> frames, Canvases* canvases);

} // namespace clipwren
