#pragma once

#include "base/PackedImage.h"
#include "capture/MemoryWatch.h"
#include "capture/RecordedFrame.h"
#include "platform/ScreenCapture.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace clipwren {

// The frames of a running recording. Every operation runs on the recorder's frame queue.
//
// Pictures are kept packed: that costs less than what the system asks for the memory of plain ones.
class FrameStore : public StreamOutput {
public:
    // `isBehind` tells whether more samples wait already: then a picture is kept as it is, which is quicker.
    FrameStore(MemoryWatch watch, std::function<bool()> isBehind);

    // Keeps the sample's picture if it is a valid, complete picture of the screen and there is memory for it;
    // drops it silently otherwise. The first kept frame has the zero time. An idle sample long after the last
    // picture lets go of memory.
    void didOutputSample(CaptureStream& stream, const StreamSample& sample, StreamOutputType type) override;

    // Hands out all frames in the order of their arrival and starts afresh.
    std::vector<RecordedFrame> take();

    // Bytes per row times height, summed over all kept frames, whatever their pictures share. An overflow is
    // a fatal error.
    std::int64_t byteCount() const { return byteCountTotal; }

private:
    void keep(const Image& image, const MediaTime& time);

    MemoryWatch watch;
    std::function<bool()> isBehind;
    ImagePacker packer;
    std::vector<RecordedFrame> frames;
    std::optional<MediaTime> startPTS; // of the first kept frame
    MediaTime lastPTS;                 // of the last one
    std::int64_t byteCountTotal = 0;
};

} // namespace clipwren
