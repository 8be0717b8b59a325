#include "encoding/RecordedAnimation.h"

#include "encoding/FrameDelays.h"
#include "encoding/Watermark.h"

#include <optional>

namespace clipwren {

namespace {

Image stamped(const RecordedFrame& frame, Canvases* canvases) {
    if (!canvases) return frame.image;
    return applyWatermark(frame.image, pulsePhase(frame.presentationTime), *canvases).value_or(frame.image);
}

double delayOf(std::span<const RecordedFrame> frames, std::size_t i) {
    std::optional<MediaTime> next;
    if (i + 1 < frames.size()) next = frames[i + 1].presentationTime;
    return frameDelay(frames[i].presentationTime, next);
}

} // namespace

Animation recordedAnimation(std::span<const RecordedFrame> frames, Canvases* canvases) {
    return {.frameCount = frames.size(),
            .preview = [frames](std::size_t i) { return frames[i].image; },
            .frame =
                [frames, canvases, delays = DelayRounder()](std::size_t i) mutable {
                    return AnimationFrame{stamped(frames[i], canvases),
                                          delays.hundredths(delayOf(frames, i))};
                }};
}

} // namespace clipwren
