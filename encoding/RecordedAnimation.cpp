#include "encoding/RecordedAnimation.h"

#include "encoding/FrameDelays.h"
#include "encoding/Watermark.h"

#include <optional>

namespace clipwren {

namespace {

Image stamped(Image image, const MediaTime& time, Canvases* canvases) {
    if (!canvases) return image;
    return applyWatermark(image, pulsePhase(time), *canvases).value_or(image);
}

double delayOf(std::span<const RecordedFrame> frames, std::size_t i) {
    std::optional<MediaTime> next;
    if (i + 1 < frames.size()) next = frames[i + 1].presentationTime;
    return frameDelay(frames[i].presentationTime, next);
}

} // namespace

Animation recordedAnimation(std::span<const RecordedFrame> frames, Canvases* canvases) {
    return {
        .frameCount = frames.size(),
        .preview = [frames, unpacker = ImageUnpacker()](
                       std::size_t i) mutable { return frames[i].image.unpacked(unpacker); },
        .frame =
            [frames, canvases, delays = DelayRounder(), unpacker = ImageUnpacker()](std::size_t i) mutable {
                return AnimationFrame{
                    stamped(frames[i].image.unpacked(unpacker), frames[i].presentationTime, canvases),
                    delays.hundredths(delayOf(frames, i))};
            }};
}

} // namespace clipwren
