#include "capture/FrameStore.h"

#include "base/CheckedArithmetic.h"

#include <utility>

namespace clipwren {

FrameStore::FrameStore(std::function<bool()> isBehind) : isBehind(std::move(isBehind)) {}

void FrameStore::didOutputSample(CaptureStream&, const StreamSample& sample, StreamOutputType type) {
    if (type != StreamOutputType::screen || !sample.isValid) return;
    if (sample.status != static_cast<int>(FrameStatus::complete) || !sample.image) return;

    const MediaTime time = startPTS ? sample.presentationTime - *startPTS : MediaTime::zero();
    if (!startPTS) startPTS = sample.presentationTime;
    frames.push_back({isBehind() ? FrameImage(*sample.image) : packer.pack(*sample.image), time});
    byteCountTotal =
        checkedAdd(byteCountTotal, checkedMultiply(sample.image->bytesPerRow(), sample.image->height()));
}

std::vector<RecordedFrame> FrameStore::take() {
    startPTS.reset();
    byteCountTotal = 0;
    packer = {};
    return std::exchange(frames, {});
}

} // namespace clipwren
